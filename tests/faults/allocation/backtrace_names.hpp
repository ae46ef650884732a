// backtrace_names.hpp - the functions behind the return addresses of a backtrace.
#pragma once

#include <string>

/// A function and where it lies.
struct frame_name {
    std::string function; // without namespaces and parameters; empty: not known
    std::string object;   // file name of the program or library; empty: not known
};

/// The function that a return address leads back to.
const frame_name& frame_name_of(const void* return_address);
