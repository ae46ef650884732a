// leak_search.hpp - finds the client's blocks that nothing points to any more.
#pragma once

#include "faults/allocation/failing_malloc.hpp"

/// Marks what can be reached from the data of the program and its libraries, from this thread's own
/// data, and from one reached block to the next; stacks do not count. Then calls `found` for each
/// of the client's blocks that was not reached. Allocates nothing.
void leaks_search(void (*found)(const live_block& block, const block_origin& origin));
