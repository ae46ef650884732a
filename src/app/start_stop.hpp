// start_stop.hpp - the start-up and the shutdown sequence.
#pragma once

/// The exit status of a failed start-up.
constexpr int start_failed_status = 255;

/// Starts the program up to the point where the key loop can run. False after one line on standard
/// error, when it cannot; the program then ends with start_failed_status.
bool app_start();

/// Takes everything down in order: screen, connections, configuration, memory. Called once, by the
/// key loop's ^X.
void app_shutdown();
