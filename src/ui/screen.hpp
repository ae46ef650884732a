// screen.hpp - starts curses, builds pages and panes, and rebuilds them when the terminal's size
// changes.
#pragma once

/// Starts curses on the terminal and stores its screen in app_state. False when it cannot, with
/// nothing written.
bool screen_start();

/// Notes the terminal's present modes, which are the ones given back with it. Call while the
/// terminal is not set up for curses.
void shell_modes_note();

/// Builds colours and windows for the terminal's present size. 1 on success, 0 as soon as a window
/// cannot be made. Windows made until then are kept.
int screen_build();

/// Rebuilds the screen for the terminal's new size, with the same things in front. The contents of
/// the panes are lost and the first server is selected. Runs on SIGWINCH.
void on_resize(int signal_number);

/// Gives the terminal back until screen_resume, or for good.
void screen_suspend();

/// Shows the screen again after the program was stopped, in the terminal's present size.
void screen_resume();

/// Deletes all panes and pages and blanks the screen.
void screen_clear();

/// Gives the terminal back. Nothing may be drawn afterwards.
void screen_end();
