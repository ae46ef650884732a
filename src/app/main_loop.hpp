// main_loop.hpp - reads keys and runs the commands behind them.
#pragma once

/// Runs until ^X.
void main_loop();
