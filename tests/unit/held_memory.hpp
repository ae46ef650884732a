// held_memory.hpp - how much memory the test program has allocated and not freed.
//
// The sanitizers allocate in their own way. There nothing is known, but what is lost is found when
// the program ends.
#pragma once

#include <cstddef>
#include <malloc.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool is_held_memory_known = false;
#else
inline constexpr bool is_held_memory_known = true;
#endif

/// In bytes, with what the library adds for its own records; 0 where it is not known.
inline std::size_t held_memory()
{
    if (!is_held_memory_known)
        return 0;
    const struct mallinfo2 blocks = mallinfo2();
    return blocks.uordblks + blocks.hblkhd;
}
