// pager_list.hpp - the window that shows a pager list which a server sent.
#pragma once

/// Shows the list until Escape, at most ten seconds; the poll cycle waits meanwhile.
/// text: records separated by "~", their fields (registration, airport, flight number) by tabs; a
/// field that begins with "^" is empty, and so is a missing one.
void pager_list_show(const char* text);
