#pragma once

#include <chrono>
#include <cstddef>

// What one connection may take of the server. A request must arrive whole within
// requestDeadline of its first byte, however it trickles in; a keep-alive connection may wait
// idleTimeout for its next request.
struct HttpLimits {
    int ioThreads = 2;
    int workers = 16;        // requests being answered at once (each holds a database connection)
    std::size_t queue = 512; // requests waiting for a worker; more are answered 503 at once
    std::chrono::milliseconds requestDeadline{10'000};
    std::chrono::milliseconds idleTimeout{30'000};
    std::chrono::milliseconds writeDeadline{10'000};
    std::size_t headerBytes = 8 * 1024;
    std::size_t headerFields = 64;
    std::size_t bodyBytes = 64 * 1024; // a full-length note, every character percent-encoded
    int connectionsPerAddress = 4096;
};
