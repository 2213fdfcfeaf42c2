#include "LoadRun.h"

#include "HttpRequests.h"
#include <iostream>

namespace load {

using Clock = std::chrono::steady_clock;

namespace {

constexpr auto kTick = std::chrono::milliseconds(200);
constexpr int kTicksPerSample = 5;
constexpr auto kGuardSlack = std::chrono::seconds(8);

Clock::duration seconds(double s) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(s));
}

} // namespace

LoadRun::LoadRun(boost::asio::io_context& io, boost::asio::ip::tcp::endpoint server,
                 const Options& options, std::vector<Identity> users)
    : io_(io), options_(options), timeout_(seconds(options.timeout)), watch_(options.serverPid),
      random_(options.seed), idleRequest_(requests::get(options.hostHeader(), "/healthz")),
      changes_(io, options.changesPerSecond, [this] { randomClient().changeStatus(); }),
      boards_(io, options.boardsPerSecond, [this] { randomClient().readBoard(); }), clock_(io),
      guard_(io) {
    const std::string host = options.hostHeader();
    if (!options.probeLog.empty())
        probeLog_.open(options.probeLog);
    std::ofstream* log = probeLog_.is_open() ? &probeLog_ : nullptr;
    probes_.push_back(std::make_unique<Probe>(io, server, Kind::Healthz, idleRequest_, stats_,
                                              timeout_, log, "healthz"));
    if (log && !users.empty())
        probes_.push_back(std::make_unique<Probe>(
            io, server, Kind::PollProbe,
            requests::statement(host, users.front().cookie,
                                "EXEC tl_GetContactStatus " +
                                    std::to_string(users.front().contactSys)),
            stats_, timeout_, log, "poll"));
    for (auto& who : users)
        clients_.push_back(std::make_unique<TrayClient>(io, server, host, std::move(who), stats_,
                                                        timeout_, !options.freshConnections));
    slow_.idle = options.idle;
    for (int i = 0; i < options.idle; ++i)
        idle_.push_back(
            std::make_unique<IdleConnection>(io, server, idleRequest_, slow_, timeout_));
    slow_.trickle = options.trickle;
    const std::string header = "GET /healthz HTTP/1.1\r\nHost: " + host + "\r\nX-Trickle: ";
    for (int i = 0; i < options.trickle; ++i)
        trickle_.push_back(
            std::make_unique<TrickleConnection>(io, server, header, slow_, timeout_));
}

LoadRun::~LoadRun() = default;

TrayClient& LoadRun::randomClient() {
    std::uniform_int_distribution<std::size_t> pick(0, clients_.size() - 1);
    return *clients_[pick(random_)];
}

void LoadRun::writeStarted() const {
    if (options_.startedFile.empty())
        return;
    using namespace std::chrono;
    std::ofstream(options_.startedFile)
        << duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count() << '\n';
}

void LoadRun::run() {
    started_ = Clock::now();
    watch_.begin();
    writeStarted();
    startAll();
    clock_.expires_after(kTick);
    clock_.async_wait([this](const boost::system::error_code& ec) {
        if (!ec)
            onTick();
    });
    guard_.expires_after(seconds(options_.duration) + timeout_ + kGuardSlack);
    guard_.async_wait([this](const boost::system::error_code& ec) {
        if (!ec)
            finish();
    });
    io_.run();
}

void LoadRun::startAll() {
    for (auto& probe : probes_)
        probe->start();
    for (auto& idle : idle_)
        idle->start();
    for (auto& trickle : trickle_)
        trickle->start();
    std::uniform_real_distribution<double> phase(0, options_.period);
    for (auto& client : clients_)
        client->start(seconds(phase(random_)), seconds(options_.period));
    if (!clients_.empty()) {
        changes_.start();
        boards_.start();
    }
}

// Every 200 ms: samples the server's memory each second, ends the timed run at its duration,
// and ends the whole once nothing is in flight any more.
void LoadRun::onTick() {
    if (++ticks_ % kTicksPerSample == 0)
        watch_.sample();
    const auto now = Clock::now();
    if (stopped_ == Clock::time_point{} && now >= started_ + seconds(options_.duration))
        stopAll();
    if (stopped_ != Clock::time_point{})
        drain();
    if (ended_ != Clock::time_point{})
        return;
    clock_.expires_at(clock_.expiry() + kTick);
    clock_.async_wait([this](const boost::system::error_code& ec) {
        if (!ec)
            onTick();
    });
}

void LoadRun::stopAll() {
    stopped_ = Clock::now();
    changes_.stop();
    boards_.stop();
    for (auto& client : clients_)
        client->stop();
    for (auto& probe : probes_)
        probe->stop();
}

// The requests still out get their own time-out to end, no more.
void LoadRun::drain() {
    bool busy = false;
    for (const auto& client : clients_)
        busy = busy || client->busy();
    for (const auto& probe : probes_)
        busy = busy || probe->busy();
    if (!busy || Clock::now() >= stopped_ + timeout_ + std::chrono::seconds(1))
        finish();
}

void LoadRun::finish() {
    if (ended_ != Clock::time_point{})
        return;
    ended_ = Clock::now();
    if (stopped_ == Clock::time_point{})
        stopped_ = ended_;
    watch_.end();
    changes_.stop();
    boards_.stop();
    clock_.cancel();
    guard_.cancel();
    for (auto& client : clients_)
        client->close();
    for (auto& probe : probes_)
        probe->close();
    for (auto& idle : idle_)
        idle->stop();
    for (auto& trickle : trickle_)
        trickle->stop();
    io_.stop();
}

void LoadRun::print(std::ostream& out) const {
    const double timed = std::chrono::duration<double>(stopped_ - started_).count();
    const double whole = std::chrono::duration<double>(ended_ - started_).count();
    out << "timed run: " << clients_.size() << " clients, poll every " << options_.period << " s, "
        << options_.changesPerSecond << " status changes/s, " << options_.boardsPerSecond
        << " board reads/s, "
        << (options_.freshConnections ? "a new connection per statement, " : "") << timed
        << " s (all answers in after " << whole << " s)\n";
    stats_.print(out);
    slow_.print(out);
    watch_.print(out, whole);
}

} // namespace load
