// failing_memory.cpp - see failing_memory.hpp. The linker sends each call of a wrapped function
// here.
#include "unit/failing_memory.hpp"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <gtest/gtest.h>
#include <ncurses.h>
#include <new>
#include <string>

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);
char* __real_strndup(const char* text, std::size_t most);
char* __real_getcwd(char* buffer, std::size_t size);
std::FILE* __real_open_memstream(char** bytes, std::size_t* length);
WINDOW* __real_newwin(int lines, int columns, int row, int column);
void* __real__Znwm(std::size_t size);
void* __real__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag);

void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* block, std::size_t size);
char* __wrap_strndup(const char* text, std::size_t most);
char* __wrap_getcwd(char* buffer, std::size_t size);
std::FILE* __wrap_open_memstream(char** bytes, std::size_t* length);
WINDOW* __wrap_newwin(int lines, int columns, int row, int column);
void* __wrap__Znwm(std::size_t size);
void* __wrap__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag);
}

namespace
{

/// Belongs to one thread. Made without allocating, since the very first allocation comes here.
struct failure_count {
    bool is_armed;
    memory_failure failure;
    long nth;
    long counted;
    bool has_failed;
};
constinit thread_local failure_count failures = {};

bool must_fail()
{
    if (!failures.is_armed)
        return false;
    const long number = ++failures.counted;
    const bool fails =
        failures.failure == memory_failure::once ? number == failures.nth : number >= failures.nth;
    if (!fails)
        return false;
    failures.has_failed = true;
    errno = ENOMEM;
    return true;
}

/// A stream with too little memory for what is written.
std::FILE* open_full_stream()
{
    cookie_io_functions_t functions = {};
    functions.write = [](void*, const char*, std::size_t) -> ssize_t {
        errno = ENOMEM;
        return 0;
    };
    return fopencookie(nullptr, "w", functions);
}

const char* name_of(memory_failure failure)
{
    return failure == memory_failure::once ? "once" : "from then on";
}

/// False when nothing was left to fail.
bool try_allocation(const memory_trial& trial, memory_failure failure, long nth)
{
    SCOPED_TRACE(std::string{"allocation "} + std::to_string(nth) + " fails, " + name_of(failure));
    trial.prepare();
    {
        const failing_memory failing{failure, nth};
        trial.call();
    }
    const bool has_failed = failing_memory::has_failed();
    if (has_failed) {
        trial.expect_after_failure(failure, nth);
        SCOPED_TRACE("with memory again");
        trial.prepare();
        trial.call();
        trial.expect_success();
    } else {
        trial.expect_success();
    }
    return has_failed;
}

} // namespace

failing_memory::failing_memory(memory_failure failure, long nth)
{
    failures = {true, failure, nth, 0, false};
}

failing_memory::~failing_memory()
{
    failures.is_armed = false;
}

bool failing_memory::has_failed()
{
    return failures.has_failed;
}

void try_each_allocation(const memory_trial& trial)
{
    for (const memory_failure failure : {memory_failure::once, memory_failure::from_then_on}) {
        long nth = 1;
        while (try_allocation(trial, failure, nth) && !testing::Test::HasFailure())
            ++nth;
        EXPECT_GT(nth, 1) << "nothing was allocated";
    }
}

void* __wrap_malloc(std::size_t size)
{
    return must_fail() ? nullptr : __real_malloc(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size)
{
    return must_fail() ? nullptr : __real_calloc(count, size);
}

void* __wrap_realloc(void* block, std::size_t size)
{
    return must_fail() ? nullptr : __real_realloc(block, size);
}

char* __wrap_strndup(const char* text, std::size_t most)
{
    return must_fail() ? nullptr : __real_strndup(text, most);
}

char* __wrap_getcwd(char* buffer, std::size_t size)
{
    return must_fail() ? nullptr : __real_getcwd(buffer, size);
}

std::FILE* __wrap_open_memstream(char** bytes, std::size_t* length)
{
    if (must_fail())
        return nullptr;
    // What the stream itself takes, inside the C library, counts as one more.
    return must_fail() ? open_full_stream() : __real_open_memstream(bytes, length);
}

WINDOW* __wrap_newwin(int lines, int columns, int row, int column)
{
    return must_fail() ? nullptr : __real_newwin(lines, columns, row, column);
}

void* __wrap__Znwm(std::size_t size)
{
    if (must_fail())
        throw std::bad_alloc{};
    return __real__Znwm(size);
}

void* __wrap__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t& tag)
{
    return must_fail() ? nullptr : __real__ZnwmRKSt9nothrow_t(size, tag);
}
