#pragma once

#include <ostream>
#include <sys/resource.h>

namespace load {

// The server's resident memory and CPU time (from /proc) and this program's own CPU time,
// over the timed run.
class ServerWatch {
public:
    explicit ServerWatch(int pid) : pid_(pid) {}

    void begin();
    void sample(); // every second: keeps the peak
    void end();
    void print(std::ostream& out, double seconds) const;

private:
    long residentKiB() const;
    double cpuSeconds() const;
    static double ownCpuSeconds();

    int pid_;
    long startKiB_ = 0, endKiB_ = 0, peakKiB_ = 0;
    double startCpu_ = 0, endCpu_ = 0;
    double ownStart_ = 0, ownEnd_ = 0;
};

} // namespace load
