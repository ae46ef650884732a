// pager_list.hpp - the window that shows a pager list from a server.
#pragma once

/// Shows the list until Escape, for ten seconds at most; the poll cycle waits meanwhile. False if
/// its time ran out.
/// text: records separated by "~", their fields (registration, airport, flight number) by tabs. A
/// field that begins with "^" is empty, and so is a missing one.
bool pager_list_show(const char* text);
