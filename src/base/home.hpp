// home.hpp - the user's home folder, where the configuration and the help text lie.
#pragma once

#include "base/owners.hpp"

/// A stay in the home folder: the constructor enters it, the end of the scope returns to the former
/// folder. If HOME is not set, nothing is entered and the current folder serves instead.
class home_visit
{
public:
    home_visit();
    ~home_visit();
    home_visit(const home_visit&) = delete;
    home_visit& operator=(const home_visit&) = delete;

    /// False if HOME names a folder that cannot be entered; the user's files are then out of reach.
    bool is_there() const
    {
        return there;
    }

    /// Keeps the working directory as it is at the end of the visit.
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

/// The value of HOME, or the empty text if it is not set. Borrowed.
const char* home_name();
