#include "TrayClient.h"

#include "HttpRequests.h"

namespace load {

using Clock = std::chrono::steady_clock;

namespace {

constexpr int kStatusIn = 3;
constexpr int kStatusOut = 8;

// The client's own status change: contact, status, no return date or time, no comment, and
// the user who set it.
std::string setStatus(const Identity& who, int status) {
    return "EXEC tl_SetStatus " + std::to_string(who.contactSys) + ',' + std::to_string(status) +
           ",NULL,NULL,NULL," + std::to_string(who.userSys);
}

} // namespace

TrayClient::TrayClient(boost::asio::io_context& io, boost::asio::ip::tcp::endpoint server,
                       const std::string& host, Identity who, LoadStats& stats,
                       Clock::duration timeout, bool keepAlive)
    : connection_(io, server, stats.connectionsOpened), timer_(io), stats_(stats),
      timeout_(timeout) {
    if (!keepAlive)
        connection_.closeAfterEach();
    const std::string contact = std::to_string(who.contactSys);
    const auto post = [&](const std::string& sql) {
        return requests::statement(host, who.cookie, sql);
    };
    notes_ = post("EXEC tl_GetContactNotesUnread  " + contact); // two blanks, as the client
    status_ = post("EXEC tl_GetContactStatus " + contact);
    chat_ = post("EXEC tl_UpdateChatStatus " + contact + ", 0");
    setIn_ = post(setStatus(who, kStatusIn));
    setOut_ = post(setStatus(who, kStatusOut));
    board_ = post("EXEC tl_GetUserStatuses NULL,NULL,1," + std::to_string(who.userSys) + ",NULL");
}

void TrayClient::start(Clock::duration phase, Clock::duration period) {
    period_ = period;
    timer_.expires_after(phase);
    timer_.async_wait([this](const boost::system::error_code& ec) {
        if (!ec)
            tick();
    });
}

// The tray's timer doesn't pile up ticks: a poll due while the last one still waits is lost.
void TrayClient::tick() {
    if (stopped_)
        return;
    if (pollWaiting_)
        stats_.skipped(Kind::Notes);
    else
        enqueue({Kind::Notes, Kind::StatusRead, Kind::ChatHeartbeat});
    timer_.expires_at(timer_.expiry() + period_);
    timer_.async_wait([this](const boost::system::error_code& ec) {
        if (!ec)
            tick();
    });
}

void TrayClient::enqueue(Job job) {
    if (stopped_)
        return;
    if (job.front() == Kind::Notes)
        pollWaiting_ = true;
    jobs_.push_back(std::move(job));
    if (!connection_.busy())
        sendNext();
}

void TrayClient::sendNext() {
    if (jobs_.empty() || stopped_)
        return;
    const Kind kind = jobs_.front()[step_];
    connection_.exchange(requestFor(kind), timeout_,
                         [this, kind](Outcome outcome) { onAnswer(kind, outcome); });
}

// A failed statement ends its poll, as an error does in the tray's timer.
void TrayClient::onAnswer(Kind kind, const Outcome& outcome) {
    stats_.record(kind, outcome);
    if (outcome.ok() && ++step_ < jobs_.front().size())
        return sendNext();
    if (jobs_.front().front() == Kind::Notes)
        pollWaiting_ = false;
    jobs_.pop_front();
    step_ = 0;
    sendNext();
}

const std::string& TrayClient::requestFor(Kind kind) {
    switch (kind) {
    case Kind::Notes:
        return notes_;
    case Kind::StatusRead:
        return status_;
    case Kind::ChatHeartbeat:
        return chat_;
    case Kind::StatusChange:
        nextIn_ = !nextIn_;
        return nextIn_ ? setIn_ : setOut_;
    default:
        return board_;
    }
}

void TrayClient::stop() {
    stopped_ = true;
    timer_.cancel();
    const bool inFlight = connection_.busy();
    for (std::size_t i = inFlight ? 1 : 0; i < jobs_.size(); ++i)
        stats_.skipped(jobs_[i].front());
    if (inFlight)
        jobs_.resize(1);
    else
        jobs_.clear();
}

} // namespace load
