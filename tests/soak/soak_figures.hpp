// soak_figures.hpp - what a running client occupies, and whether that grows.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>
#include <vector>

/// One look at the process.
struct soak_sample {
    double hours = 0; // by the program's clock, since its start
    double resident_kb = 0;
    double proportional_kb = 0;
    double heap_kb = 0; // resident part of the heap; 0 where there is none
    int descriptors = 0;
    int threads = 0;
    int children = 0;
};

/// Resident memory may grow by this much.
constexpr double tolerated_growth_kb = 256;

/// Looks at the process now; `hours` is left to the caller.
soak_sample soak_sample_of(pid_t process);

/// One line of text.
std::string soak_sample_line(const soak_sample& sample);

/// Whether the client shows no more at the end than at the beginning: the counts are equal in all
/// samples, and the least resident memory of the last hour is no more than that of the second one,
/// but for the tolerance. In the first hour every server still meets things for the first time. The
/// least, since a large text that is just being worked on is no growth. Shorter soaks are judged by
/// the same parts of their length, with a sixth and a third for an hour. With sanitizers memory is
/// not compared: they keep what was freed.
testing::AssertionResult nothing_has_grown(const std::vector<soak_sample>& samples);
