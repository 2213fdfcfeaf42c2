#pragma once

#include "Identity.h"
#include "IdleConnection.h"
#include "LoadStats.h"
#include "Options.h"
#include "Probe.h"
#include "RateTicker.h"
#include "ServerWatch.h"
#include "SlowCounts.h"
#include "TrayClient.h"
#include "TrickleConnection.h"
#include <fstream>
#include <memory>
#include <random>

namespace load {

// The timed run: the tray clients polling, the status changes and board reads spread over
// random clients, the slow connections and the probes, for the run's duration; then the
// requests still out get their time-out to end, and the report.
class LoadRun {
public:
    LoadRun(boost::asio::io_context& io, boost::asio::ip::tcp::endpoint server,
            const Options& options, std::vector<Identity> users);
    ~LoadRun();

    void run(); // returns by the duration + the request time-out + a few seconds
    void print(std::ostream& out) const;

private:
    void startAll();
    void onTick();
    void stopAll();
    void drain();
    void finish();
    TrayClient& randomClient();
    void writeStarted() const;

    boost::asio::io_context& io_;
    const Options& options_;
    std::chrono::steady_clock::duration timeout_;
    LoadStats stats_;
    SlowCounts slow_;
    ServerWatch watch_;
    std::mt19937 random_;
    std::ofstream probeLog_;
    std::string idleRequest_;
    std::vector<std::unique_ptr<TrayClient>> clients_;
    std::vector<std::unique_ptr<IdleConnection>> idle_;
    std::vector<std::unique_ptr<TrickleConnection>> trickle_;
    std::vector<std::unique_ptr<Probe>> probes_;
    RateTicker changes_;
    RateTicker boards_;
    boost::asio::steady_timer clock_; // memory samples, the end, the drain
    boost::asio::steady_timer guard_; // stops everything, whatever is still waiting
    std::chrono::steady_clock::time_point started_, stopped_, ended_;
    int ticks_ = 0;
};

} // namespace load
