#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace load {

// What became of the idle and the trickling connections.
struct SlowCounts {
    int idle = 0;
    std::uint64_t idleAnswered = 0; // the one good request got its 200
    std::map<std::string, std::uint64_t> idleFailures;
    std::vector<double> idleClosedAfter; // seconds after the answer the server closed one
    int trickle = 0;
    std::uint64_t trickleConnects = 0;
    std::uint64_t trickleBytes = 0;
    std::uint64_t trickleClosed = 0;   // by the server, with or without an answer
    std::uint64_t trickleAnswered = 0; // of those, how many got some answer first
    std::map<std::string, std::uint64_t> trickleFailures;

    void print(std::ostream& out) const;
};

} // namespace load
