#pragma once

#include "SlowCounts.h"
#include <array>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/tcp_stream.hpp>

namespace load {

// A connection that sends an endless request header, one byte every 4 s, for the whole run;
// when the server closes it, it connects again at the next byte's time.
class TrickleConnection {
public:
    TrickleConnection(boost::asio::io_context& io, boost::asio::ip::tcp::endpoint server,
                      std::string header, SlowCounts& counts,
                      std::chrono::steady_clock::duration timeout);

    void start();
    void stop();

private:
    void connect();
    void tick();
    void sendByte();
    void watch();
    void closed(bool answered);
    char byteAt(std::size_t index) const;

    boost::beast::tcp_stream stream_;
    boost::asio::ip::tcp::endpoint server_;
    boost::asio::steady_timer timer_;
    std::string header_; // then 'x' for ever
    SlowCounts& counts_;
    std::chrono::steady_clock::duration timeout_;
    std::array<char, 256> sink_{};
    std::size_t sent_ = 0;
    char byte_ = 0;
    bool connected_ = false;
    bool connecting_ = false;
    bool stopped_ = false;
};

} // namespace load
