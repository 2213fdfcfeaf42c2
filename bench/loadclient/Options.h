#pragma once

#include <optional>
#include <string>

namespace load {

// The command line of bench_load.
struct Options {
    std::string host = "127.0.0.1"; // from --url http://HOST:PORT
    std::string port = "80";
    int clients = 100;
    double period = 3;              // seconds between one client's polls
    double duration = 60;           // seconds of the timed run
    double changesPerSecond = 0;    // status changes, over all clients
    double boardsPerSecond = 0;     // board reads, over all clients
    int idle = 0;                   // silent keep-alive connections
    int trickle = 0;                // connections sending a header a byte every 4 s
    std::string userPrefix = "pat"; // sign-ins are PREFIX<first>, PREFIX<first + 1>, ...
    int firstUser = 0;
    std::string password = "demo";
    int signInConcurrency = 4;
    double signInLimit = 900; // seconds for all sign-ins
    double timeout = 30;      // seconds for any one request
    int serverPid = 0;        // its memory and CPU are reported when given
    std::string probeLog;     // each probe's answers, one line each
    std::string startedFile;  // gets the run's start (ms since the epoch) when it starts
    unsigned seed = 1;
    bool freshConnections = false; // a new connection for every statement (no keep-alive)

    std::string hostHeader() const { return host + ':' + port; }
};

// Reads the command line; prints the usage or the fault and returns nothing when it is wrong.
std::optional<Options> parseOptions(int argc, char** argv);

} // namespace load
