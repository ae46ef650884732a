// screen_size.hpp - the terminal's size, and curses' own windows of that size.
#pragma once

#include <sys/ioctl.h>

/// The terminal's present size, in rows and columns; one that does not tell has the size that it
/// had. Two columns at least.
winsize screen_size_now();

/// Has curses take over the terminal's present size, at a time when there are no windows of ours.
/// False when memory is too short for it; curses' windows may then differ in size.
bool screen_size_follow();
