// fault_layout.hpp - what a test and the preload that makes system calls fail have in common.
#pragma once

#include <atomic>
#include <cstddef>

/// The calls that can be made to fail. Calls of the same use go by one name.
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
    look_up, // of a host's name, not of a number
};

/// In place of an errno: the call does a part of what it was asked for.
constexpr int short_count = -1;

/// In place of an errno: a read finds nothing more.
constexpr int end_of_file = -2;

constexpr const char* fault_file_variable = "TEST_FAULT_FILE";

/// Lies in a file that both map, or in the process itself. Zeroed: nothing fails.
struct fault_layout {
    std::atomic<int> call;    // a faulty_call; which one fails
    std::atomic<int> skipped; // calls that go well before
    std::atomic<int> failing; // calls that fail then
    std::atomic<int> error;   // errno, EAI_ code of a look_up, short_count or end_of_file
    std::atomic<int> hits;    // calls that have failed
    char name[64];            // part of the path that is meant; empty: any

    std::atomic<int> kill_at; // the step, from 1, before which the process is killed; 0: none
    std::atomic<int> steps;   // calls seen, of every kind
    std::atomic<int> piece;   // most bytes that one write takes; 0: any number

    std::atomic<long> limit_us; // how long the latest ppoll on a descriptor might have lasted
};
