// main_loop.hpp - reads keys and runs their commands.
#pragma once

/// Runs until ^X.
void main_loop();
