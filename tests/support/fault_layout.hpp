// fault_layout.hpp - what a test shares with the preload that makes its system calls fail.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

/// The calls that can be made to fail. Calls with the same purpose share a name.
enum class faulty_call : int {
    none,
    socket,
    connect,
    poll,  // poll and ppoll on descriptors
    pause, // ppoll on nothing
    send,
    read,
    status, // fstat
    write,
    open,
    make_unique, // mkostemp
    lock,
    set_owner,
    set_mode,
    set_length, // ftruncate and posix_fallocate
    sync,
    close,
    rename,
    remove, // unlink and unlinkat
    fork,
    wait,
    thread,
    look_up, // a host name, not a number
};

/// In place of an errno: the call does only part of what was asked.
constexpr int short_count = -1;

/// In place of an errno: a read finds end of file.
constexpr int end_of_file = -2;

constexpr const char* fault_file_variable = "TEST_FAULT_FILE";

/// One thing that fails. Zeroed: nothing does.
struct fault_slot {
    std::atomic<int> call;    // a faulty_call: the one that fails
    std::atomic<int> skipped; // calls that succeed first
    std::atomic<int> failing; // calls that then fail
    std::atomic<int> error;   // errno, EAI_ code of a look_up, short_count or end_of_file
    std::atomic<int> hits;    // calls that have failed
    char name[64];            // part of the path of the file concerned; empty: any
};

/// How many things can fail at the same time.
constexpr std::size_t max_faults = 16;

/// Lies in a file that both sides map, or in the process itself. Zeroed: nothing fails.
struct fault_layout {
    fault_slot faults[max_faults];

    std::atomic<int> kill_at; // the step, from 1, before which the process is killed; 0: none
    std::atomic<int> steps;   // calls seen, of every kind, while anything depends on them
    std::atomic<int> piece;   // the most bytes that one write takes; 0: any number

    std::atomic<int> signal_number; // what the process is sent before some of its calls
    std::atomic<int> signal_at;     // the first step, from 1, before which it is sent; 0: none
    std::atomic<int> signal_every;  // the steps from one signal to the next; 0: it is sent once
    std::atomic<int> signals;       // that were sent

    std::atomic<std::int64_t>
        limit_us; // how long the latest ppoll on a descriptor was allowed to wait
};
