#pragma once

namespace torvex {

// Makes threads that wait at the end of a parallel loop sleep after microseconds instead of
// milliseconds. The OpenMP runtime reads its settings before main begins, so the process replaces
// itself by the same program with GOMP_SPINCOUNT set; returns where that is not needed, because
// the environment says how to wait, or not possible.
void prefer_short_waits(char** argv);

}  // namespace torvex
