#pragma once

#include "HttpConnection.h"
#include "Kind.h"
#include "LoadStats.h"
#include <boost/asio/steady_timer.hpp>
#include <fstream>

namespace load {

// Sends one request every 100 ms (or as soon as the last one is answered, when later) on a
// connection of its own and times it; with a log, writes each answer as
// "<ms since the epoch> <name> <ms it took> <200 or the failure>".
class Probe {
public:
    Probe(boost::asio::io_context& io, boost::asio::ip::tcp::endpoint server, Kind kind,
          std::string request, LoadStats& stats, std::chrono::steady_clock::duration timeout,
          std::ofstream* log, std::string logName);

    void start();
    void stop();
    bool busy() const { return connection_.busy(); }
    void close() { connection_.close(); }

private:
    void tick();
    void onAnswer(const Outcome& outcome);

    HttpConnection connection_;
    boost::asio::steady_timer timer_;
    Kind kind_;
    std::string request_;
    LoadStats& stats_;
    std::chrono::steady_clock::duration timeout_;
    std::ofstream* log_;
    std::string logName_;
    bool stopped_ = false;
};

} // namespace load
