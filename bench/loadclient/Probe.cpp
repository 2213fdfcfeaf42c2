#include "Probe.h"

namespace load {

using Clock = std::chrono::steady_clock;

namespace {

constexpr auto kEvery = std::chrono::milliseconds(100);

long long epochMillis() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace

Probe::Probe(boost::asio::io_context& io, boost::asio::ip::tcp::endpoint server, Kind kind,
             std::string request, LoadStats& stats, Clock::duration timeout, std::ofstream* log,
             std::string logName)
    : connection_(io, server, stats.connectionsOpened), timer_(io), kind_(kind),
      request_(std::move(request)), stats_(stats), timeout_(timeout), log_(log),
      logName_(std::move(logName)) {}

void Probe::start() {
    timer_.expires_after(Clock::duration::zero());
    tick();
}

void Probe::stop() {
    stopped_ = true;
    timer_.cancel();
}

void Probe::tick() {
    if (stopped_)
        return;
    timer_.expires_at(timer_.expiry() + kEvery);
    connection_.exchange(request_, timeout_, [this](Outcome outcome) { onAnswer(outcome); });
}

// The next probe waits for the timer unless this answer came after it.
void Probe::onAnswer(const Outcome& outcome) {
    stats_.record(kind_, outcome);
    if (log_)
        *log_ << epochMillis() << ' ' << logName_ << ' '
              << std::chrono::duration_cast<std::chrono::milliseconds>(outcome.elapsed).count()
              << ' ' << (outcome.ok() ? std::string("200") : outcome.failure) << '\n';
    if (stopped_)
        return;
    if (timer_.expiry() <= Clock::now())
        timer_.expires_at(Clock::now());
    timer_.async_wait([this](const boost::system::error_code& ec) {
        if (!ec)
            tick();
    });
}

} // namespace load
