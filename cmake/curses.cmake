# The wide-character build of ncurses, as the target curses::curses.
set(CURSES_NEED_NCURSES TRUE)
set(CURSES_NEED_WIDE TRUE)
find_package(Curses REQUIRED)
find_library(TINFO_LIBRARY tinfo REQUIRED)
add_library(curses::curses INTERFACE IMPORTED)
set_target_properties(curses::curses PROPERTIES
  INTERFACE_INCLUDE_DIRECTORIES "${CURSES_INCLUDE_DIRS}"
  INTERFACE_LINK_LIBRARIES "${CURSES_LIBRARIES};${TINFO_LIBRARY}")
