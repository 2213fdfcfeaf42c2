#pragma once

#include "HttpConnection.h"
#include "Identity.h"
#include "Options.h"
#include <boost/asio/io_context.hpp>
#include <map>
#include <memory>
#include <vector>

namespace load {

// Signs the users in before the timed run, a few at a time (the server hashes two passwords
// at once and makes the rest wait). Gives up after ten failures in a row or when the time
// allowed for all sign-ins is spent.
class SignInPhase {
public:
    SignInPhase(boost::asio::io_context& io, boost::asio::ip::tcp::endpoint server,
                const Options& options);

    // Runs the io_context until every sign-in has ended; the users that got a session.
    std::vector<Identity> run();

private:
    struct Worker {
        std::unique_ptr<HttpConnection> connection;
        std::string request;
        std::string user;
    };
    void next(Worker& worker);
    void onAnswer(Worker& worker, const Outcome& outcome);
    void report(double seconds) const;

    boost::asio::io_context& io_;
    const Options& options_;
    std::uint64_t opened_ = 0;
    std::vector<Worker> workers_;
    std::vector<Identity> signedIn_;
    std::map<std::string, int> failures_;
    int nextUser_ = 0;
    int failuresInARow_ = 0;
    std::chrono::steady_clock::time_point deadline_;
};

} // namespace load
