// open_files.cpp - see open_files.hpp.
#include "support/open_files.hpp"

#include <algorithm>
#include <sys/resource.h>

bool allow_open_files(unsigned long count)
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_cur >= count)
        return true;
    limit.rlim_cur = count;
    limit.rlim_max = std::max<rlim_t>(limit.rlim_max, count);
    return setrlimit(RLIMIT_NOFILE, &limit) == 0;
}
