#include "RateTicker.h"

namespace load {

void RateTicker::start() {
    if (perSecond_ <= 0)
        return;
    timer_.expires_after(std::chrono::steady_clock::duration::zero());
    wait();
}

// The next call is due a fixed step after the last one was due, so late calls catch up.
void RateTicker::wait() {
    const auto step = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(1.0 / perSecond_));
    timer_.expires_at(timer_.expiry() + step);
    timer_.async_wait([this](const boost::system::error_code& ec) {
        if (ec || stopped_)
            return;
        action_();
        wait();
    });
}

} // namespace load
