// Time and memory of a piece of work.
#ifndef KVXDM_BENCH_MEASURE_H
#define KVXDM_BENCH_MEASURE_H

#include <functional>
#include <vector>

#include "case.h"

/** The seconds that `work` takes by `clock`. */
double secondsOf(Clock clock, const std::function<void()>& work);

/** REQUIRES: there are samples. */
double medianOf(std::vector<double> samples);

/**
 * The bytes by which the resident memory of a process grows at most during `work`. Runs in a child process that has
 * returned all free memory, so that memory left over from earlier work is not taken for granted.
 */
long peakBytesOf(const std::function<void()>& prepare, const std::function<void()>& work);

#endif
