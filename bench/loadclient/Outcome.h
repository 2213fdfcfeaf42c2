#pragma once

#include <chrono>
#include <string>

namespace load {

// How one request ended.
struct Outcome {
    int status = 0;      // the HTTP status; 0 when no answer came
    std::string failure; // empty for a 200, else "timeout", "refused", "closed", "status 503"...
    std::chrono::steady_clock::duration elapsed{}; // from the first byte sent (or connect)
    std::string body;                              // the answer's body
    std::string cookie; // the TavloSession value the answer set, if it set one
    bool ok() const { return failure.empty(); }
};

} // namespace load
