// long_times.hpp - the C library's and the system's names of calls that take times or sizes of
// files, for preloads.
//
// They differ on processors of 32 bits, where the plain names take short times and sizes, and the C
// library's headers rename each call that is made or defined.
#pragma once

#include <sys/syscall.h>
#include <unistd.h>

namespace long_times
{

#ifdef SYS_clock_gettime64
constexpr const char* ppoll = "__ppoll64";
constexpr const char* fstat = "__fstat64_time64";
constexpr const char* mkostemp = "mkostemp64";
constexpr const char* ftruncate = "ftruncate64";
constexpr const char* posix_fallocate = "posix_fallocate64";
constexpr long sys_clock_gettime = SYS_clock_gettime64;
#else
constexpr const char* ppoll = "ppoll";
constexpr const char* fstat = "fstat";
constexpr const char* mkostemp = "mkostemp";
constexpr const char* ftruncate = "ftruncate";
constexpr const char* posix_fallocate = "posix_fallocate";
constexpr long sys_clock_gettime = SYS_clock_gettime;
#endif

} // namespace long_times
