#pragma once

#include <boost/asio/steady_timer.hpp>
#include <functional>

namespace load {

// Calls a function at a steady rate per second (none at rate 0) until stopped.
class RateTicker {
public:
    RateTicker(boost::asio::io_context& io, double perSecond, std::function<void()> action)
        : timer_(io), perSecond_(perSecond), action_(std::move(action)) {}

    void start();
    void stop() {
        stopped_ = true;
        timer_.cancel();
    }

private:
    void wait();

    boost::asio::steady_timer timer_;
    double perSecond_;
    std::function<void()> action_;
    bool stopped_ = false;
};

} // namespace load
