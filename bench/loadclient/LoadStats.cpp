#include "LoadStats.h"

#include <algorithm>
#include <cstdio>

namespace load {

namespace {

double millis(std::uint32_t micros) {
    return micros / 1000.0;
}

// The nearest-rank percentile of sorted times.
std::uint32_t percentile(const std::vector<std::uint32_t>& sorted, double share) {
    if (sorted.empty())
        return 0;
    const auto rank = static_cast<std::size_t>(share * static_cast<double>(sorted.size()) + 0.999);
    return sorted[std::clamp<std::size_t>(rank, 1, sorted.size()) - 1];
}

std::string joined(const std::map<std::string, std::uint64_t>& counts) {
    std::string text;
    for (const auto& [name, count] : counts)
        text += (text.empty() ? "" : ", ") + name + " " + std::to_string(count);
    return text;
}

} // namespace

void LoadStats::record(Kind kind, const Outcome& outcome) {
    PerKind& k = kinds_[index(kind)];
    ++k.sent;
    if (!outcome.ok()) {
        ++k.failures[outcome.failure];
        return;
    }
    const auto us = std::chrono::duration_cast<std::chrono::microseconds>(outcome.elapsed);
    k.micros.push_back(static_cast<std::uint32_t>(us.count()));
}

void LoadStats::printLine(std::ostream& out, Kind kind, const PerKind& k) {
    std::vector<std::uint32_t> sorted = k.micros;
    std::sort(sorted.begin(), sorted.end());
    std::uint64_t errors = 0;
    for (const auto& [name, count] : k.failures)
        errors += count;
    char line[160];
    if (sorted.empty())
        std::snprintf(line, sizeof line, "%-15s %8llu %7llu %9s %9s %9s",
                      std::string(nameOf(kind)).c_str(), static_cast<unsigned long long>(k.sent),
                      static_cast<unsigned long long>(errors), "-", "-", "-");
    else
        std::snprintf(line, sizeof line, "%-15s %8llu %7llu %9.1f %9.1f %9.1f",
                      std::string(nameOf(kind)).c_str(), static_cast<unsigned long long>(k.sent),
                      static_cast<unsigned long long>(errors), millis(percentile(sorted, 0.50)),
                      millis(percentile(sorted, 0.99)), millis(sorted.back()));
    out << line;
    if (errors)
        out << "   (" << joined(k.failures) << ')';
    if (k.skipped)
        out << "   skipped " << k.skipped;
    out << '\n';
}

void LoadStats::print(std::ostream& out) const {
    out << "kind                sent  errors    p50 ms    p99 ms    max ms   (times of good "
           "answers)\n";
    std::map<std::string, std::uint64_t> all;
    bool skipped = false;
    for (std::size_t i = 0; i < kKinds; ++i) {
        const PerKind& k = kinds_[i];
        if (k.sent == 0 && k.skipped == 0 && i >= index(Kind::PollProbe))
            continue;
        printLine(out, static_cast<Kind>(i), k);
        skipped = skipped || k.skipped > 0;
        for (const auto& [name, count] : k.failures)
            all[name] += count;
    }
    if (skipped)
        out << "skipped: due but never sent (a poll while the client's last one still waited, "
               "or work still queued at the end)\n";
    out << "errors by kind: " << (all.empty() ? "none" : joined(all)) << '\n';
    out << "connections opened by the clients and probes: " << connectionsOpened << '\n';
}

} // namespace load
