// patience.hpp - how long the tests wait for something before they fail.
//
// Every wait ends as soon as its condition holds. The limits only bound a failing test, so they are
// generous, and longer still under sanitizers and emulators.
#pragma once

#include <chrono>

/// How much slower than an ordinary build this one may be.
constexpr int patience_factor()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(EMULATOR)
    return 3;
#else
    return 1;
#endif
}

/// `seconds` on an ordinary build, more under a sanitizer.
constexpr std::chrono::milliseconds patience(int seconds)
{
    return std::chrono::seconds{seconds * patience_factor()};
}

/// The limit of a wait that does not give one.
constexpr std::chrono::milliseconds default_patience = patience(20);
