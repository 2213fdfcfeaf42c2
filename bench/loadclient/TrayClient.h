#pragma once

#include "HttpConnection.h"
#include "Identity.h"
#include "Kind.h"
#include "LoadStats.h"
#include <boost/asio/steady_timer.hpp>
#include <deque>
#include <vector>

namespace load {

// One simulated tray program: a keep-alive connection, the poll every period (notes count,
// own status, chat heartbeat, each after the previous answer), and the status changes and
// board reads it is handed. Its statements go out one at a time in the order they came.
class TrayClient {
public:
    TrayClient(boost::asio::io_context& io, boost::asio::ip::tcp::endpoint server,
               const std::string& host, Identity who, LoadStats& stats,
               std::chrono::steady_clock::duration timeout, bool keepAlive);

    // Polls every period from now + phase.
    void start(std::chrono::steady_clock::duration phase,
               std::chrono::steady_clock::duration period);
    void changeStatus() { enqueue({Kind::StatusChange}); }
    void readBoard() { enqueue({Kind::BoardRead}); }
    // No more work: the waiting work counts as skipped; a request in flight runs to its end.
    void stop();
    bool busy() const { return connection_.busy(); }
    void close() { connection_.close(); }

private:
    using Job = std::vector<Kind>;
    void tick();
    void enqueue(Job job);
    void sendNext();
    void onAnswer(Kind kind, const Outcome& outcome);
    const std::string& requestFor(Kind kind);

    HttpConnection connection_;
    boost::asio::steady_timer timer_;
    LoadStats& stats_;
    std::chrono::steady_clock::duration timeout_;
    std::chrono::steady_clock::duration period_{};
    std::deque<Job> jobs_;
    std::size_t step_ = 0; // of the front job
    bool pollWaiting_ = false;
    bool stopped_ = false;
    bool nextIn_ = false;
    std::string notes_, status_, chat_, setIn_, setOut_, board_;
};

} // namespace load
