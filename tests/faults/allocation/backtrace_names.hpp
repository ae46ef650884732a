// backtrace_names.hpp - the functions to which the return addresses of a backtrace belong.
#pragma once

#include <string>

/// A function and the file that contains it.
struct frame_name {
    std::string function; // without namespaces and parameters; empty: unknown
    std::string object;   // file name of the program or library; empty: unknown
};

/// The function that a return address belongs to.
const frame_name& frame_name_of(const void* return_address);
