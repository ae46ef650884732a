// emulator.hpp - what runs the programs of a build for another processor.
#pragma once

#include <string>
#include <vector>

/// Puts the emulator in front of a command of this build's programs. Without one, and before
/// programs of the system, changes nothing.
inline void emulator_add([[maybe_unused]] std::vector<std::string>& command)
{
#ifdef EMULATOR
    const std::string& program = command.front();
    if (program == CLIENT_BINARY || program == TOVRIKSIM_BINARY)
        command.insert(command.begin(), {EMULATOR, "-L", EMULATED_ROOT});
#endif
}
