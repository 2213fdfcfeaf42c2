#include "shell/StartTrace.h"

#include <QtGlobal>
#include <chrono>
#include <cstdio>

void TraceStart(const char* step) {
    static const bool enabled = qEnvironmentVariableIntValue("TAVLO_TRACE_START") == 1;
    if (!enabled)
        return;
    const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    std::fprintf(stderr, "tavlo-start %s %lld\n", step, static_cast<long long>(now.count()));
    std::fflush(stderr);
}
