#pragma once

// With TAVLO_TRACE_START=1 in the environment, writes "tavlo-start <step> <microseconds since
// the epoch>" on standard error, so that a script can time the start-up (bench/start-memory).
// Otherwise does nothing.
void TraceStart(const char* step);
