// pause.hpp - sleeping, which is when the watched signals are delivered.
//
// The watched signals (signal_door.hpp) are blocked in the main thread at all times except inside
// pause_for, so a handler never sees anything half done: it may draw, allocate, send, and pause
// itself. Only the handlers of crashes run at any moment (ui/terminal_rescue.hpp).
#pragma once

/// Blocks the watched signals in the calling thread and takes the state lock. Call once, first.
void pause_init();

/// Does app_state.pause_work, if there is any, and sleeps for `microseconds`, or less if a signal
/// comes; the only place that lets signals in.
/// Any window of app_state and any entry's connection may have changed on return.
void pause_for(long microseconds);
