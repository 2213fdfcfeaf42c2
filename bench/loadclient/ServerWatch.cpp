#include "ServerWatch.h"

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <unistd.h>

namespace load {

namespace {

double mib(long kib) {
    return kib / 1024.0;
}

} // namespace

long ServerWatch::residentKiB() const {
    std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0)
            return std::stol(line.substr(6));
    }
    return 0;
}

// utime and stime, fields 14 and 15 of /proc/PID/stat (after the name in parentheses).
double ServerWatch::cpuSeconds() const {
    std::ifstream stat("/proc/" + std::to_string(pid_) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    const auto close = text.rfind(')');
    if (close == std::string::npos)
        return 0;
    std::istringstream fields(text.substr(close + 2));
    std::string skip;
    for (int i = 3; i < 14; ++i)
        fields >> skip;
    double user = 0, system = 0;
    fields >> user >> system;
    return (user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double ServerWatch::ownCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) { return t.tv_sec + t.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void ServerWatch::begin() {
    ownStart_ = ownCpuSeconds();
    if (pid_ <= 0)
        return;
    startKiB_ = peakKiB_ = residentKiB();
    startCpu_ = cpuSeconds();
}

void ServerWatch::sample() {
    if (pid_ > 0)
        peakKiB_ = std::max(peakKiB_, residentKiB());
}

void ServerWatch::end() {
    ownEnd_ = ownCpuSeconds();
    if (pid_ <= 0)
        return;
    endKiB_ = residentKiB();
    peakKiB_ = std::max(peakKiB_, endKiB_);
    endCpu_ = cpuSeconds();
}

void ServerWatch::print(std::ostream& out, double seconds) const {
    if (pid_ > 0) {
        out << "server resident memory (VmRSS): at the start " << mib(startKiB_)
            << " MiB, at the end " << mib(endKiB_) << " MiB, peak " << mib(peakKiB_)
            << " MiB (sampled each second)\n"
            << std::setprecision(1);
        if (endKiB_ == 0)
            out << "the server was gone at the end\n";
        out << "server CPU: " << std::setprecision(2) << endCpu_ - startCpu_ << " s in " << seconds
            << " s (" << 100 * (endCpu_ - startCpu_) / seconds << " % of one core)\n";
    }
    out << "bench_load CPU: " << std::setprecision(2) << ownEnd_ - ownStart_ << " s ("
        << 100 * (ownEnd_ - ownStart_) / seconds << " % of one core)\n";
}

} // namespace load
