// home.hpp - the user's home folder, where the configuration and the help text lie.
#pragma once

#include "data/owners.hpp"

/// A stay in the home folder: entered when made, left for the former folder at the end of its
/// scope. While HOME is not set, nothing is entered and the current folder serves in its place.
class home_visit
{
public:
    home_visit();
    ~home_visit();
    home_visit(const home_visit&) = delete;
    home_visit& operator=(const home_visit&) = delete;

    /// False when HOME names no folder that can be entered; nothing of the user's is reachable
    /// then.
    bool is_there() const
    {
        return there;
    }

    /// Makes the end of the visit leave the working directory where it is.
    void stay()
    {
        staying = true;
    }

private:
    unique_fd former;
    bool entered = false;
    bool there = true;
    bool staying = false;
};

/// The value of HOME, or the empty text when it is not set. Borrowed.
const char* home_name();
