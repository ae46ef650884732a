// main.cpp - the program: start, key loop, shutdown.
#include "app/main_loop.hpp"
#include "app/start_stop.hpp"
#include "base/pause.hpp"
#include "ui/terminal_line.hpp"

#include <clocale>

int main()
{
    // Only characters follow the user's locale; numbers on the wire and on disk stay plain.
    std::setlocale(LC_CTYPE, "");
    terminal_wait_for_turn();
    pause_init();
    if (!app_start())
        return start_failed_status;
    main_loop();
    app_shutdown();
    return 0;
}
