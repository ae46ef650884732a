// owners.hpp - small owners for C resources that live in a scope.
//
// Each releases its resource at the end of its scope; raw pointers elsewhere only borrow.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unistd.h>
#include <utility>

/// Calls `release` on what a unique_ptr holds.
template <auto release> struct releaser {
    template <typename T> void operator()(T* held) const noexcept
    {
        static_cast<void>(release(held));
    }
};

/// A malloc'ed, NUL-terminated text; null means "none".
using heap_text = std::unique_ptr<char, releaser<std::free>>;

/// malloc'ed bytes without a terminator; null means "none".
using heap_bytes = std::unique_ptr<unsigned char, releaser<std::free>>;

/// An open stdio stream; null means "not open".
using unique_file = std::unique_ptr<std::FILE, releaser<std::fclose>>;

/// A file descriptor that is closed at the end of its scope; -1 means "none".
class unique_fd
{
public:
    explicit unique_fd(int held = -1) : fd(held) {}
    unique_fd(unique_fd&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    unique_fd& operator=(unique_fd&& other) noexcept
    {
        std::swap(fd, other.fd);
        return *this;
    }
    unique_fd(const unique_fd&) = delete;
    unique_fd& operator=(const unique_fd&) = delete;
    ~unique_fd()
    {
        if (fd >= 0)
            ::close(fd);
    }
    int get() const
    {
        return fd;
    }
    /// Hands the descriptor to another owner.
    int release()
    {
        return std::exchange(fd, -1);
    }
    explicit operator bool() const
    {
        return fd >= 0;
    }

private:
    int fd;
};
