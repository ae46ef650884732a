// soak_figures.hpp - the resources that a running client uses, and whether they grow.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>
#include <vector>

/// One measurement of the process.
struct soak_sample {
    double hours = 0; // by the program's clock, since its start
    double resident_kb = 0;
    double proportional_kb = 0;
    double heap_kb = 0; // resident part of the heap; 0 if there is none
    int descriptors = 0;
    int threads = 0;
    int children = 0;
};

/// Resident memory may grow by this much.
constexpr double tolerated_growth_kb = 256;

/// Measures the process now; the caller sets `hours`.
soak_sample soak_sample_of(pid_t process);

/// One line of text.
std::string soak_sample_line(const soak_sample& sample);

/// Whether the client uses no more at the end than at the beginning: the counts are equal in all
/// samples, and the least resident memory of the last hour is within the tolerance of that of the
/// second hour. In the first hour every server still sees things for the first time. The least
/// counts, since a large text that is being processed is not growth. Shorter soaks compare the
/// same parts of their length, with a sixth and a third for an hour. Under sanitizers memory is not
/// compared: they keep what was freed.
testing::AssertionResult nothing_has_grown(const std::vector<soak_sample>& samples);
