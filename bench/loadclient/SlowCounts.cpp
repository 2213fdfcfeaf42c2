#include "SlowCounts.h"

#include <algorithm>

namespace load {

namespace {

std::string joined(const std::map<std::string, std::uint64_t>& counts) {
    std::string text;
    for (const auto& [name, count] : counts)
        text += "; " + name + " " + std::to_string(count);
    return text;
}

} // namespace

void SlowCounts::print(std::ostream& out) const {
    if (idle > 0) {
        std::vector<double> after = idleClosedAfter;
        std::sort(after.begin(), after.end());
        out << "idle connections: " << idle << ", first answer good " << idleAnswered
            << joined(idleFailures) << "; closed by the server " << after.size();
        if (!after.empty())
            out << " (median " << after[after.size() / 2] << " s after the answer)";
        out << '\n';
    }
    if (trickle > 0)
        out << "trickling connections: " << trickle << ", connects " << trickleConnects
            << ", bytes sent " << trickleBytes << ", closed by the server " << trickleClosed << " ("
            << trickleAnswered << " with an answer first)" << joined(trickleFailures) << '\n';
}

} // namespace load
