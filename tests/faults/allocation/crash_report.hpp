// crash_report.hpp - where a run crashed or was ended, for the process that waits for it.
#pragma once

constexpr int crash_frames = 48;

/// Lies in memory that both processes share.
struct crash_report {
    int signal_number = 0;           // 0: a library ended the program, or nothing happened
    int depth = 0;                   // 0: nothing happened
    void* frames[crash_frames] = {}; // return addresses, innermost first
};

/// From here on, crashes of this process and calls of exit() record their backtrace. Then the
/// client's own reaction follows.
void crashes_report_to(crash_report& report);
