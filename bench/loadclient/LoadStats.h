#pragma once

#include "Kind.h"
#include "Outcome.h"
#include <array>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace load {

// Counts and times of the timed run, per kind of request.
class LoadStats {
public:
    void record(Kind kind, const Outcome& outcome);
    // Work that was due but never went out: a poll while the last one still waited, or a
    // request still queued when the run ended.
    void skipped(Kind kind) { ++kinds_[index(kind)].skipped; }
    void print(std::ostream& out) const;

    std::uint64_t connectionsOpened = 0; // by the tray clients and the probes

private:
    struct PerKind {
        std::uint64_t sent = 0;
        std::uint64_t skipped = 0;
        std::map<std::string, std::uint64_t> failures;
        std::vector<std::uint32_t> micros; // of the good answers
    };
    static std::size_t index(Kind kind) { return static_cast<std::size_t>(kind); }
    static void printLine(std::ostream& out, Kind kind, const PerKind& k);

    std::array<PerKind, kKinds> kinds_;
};

} // namespace load
