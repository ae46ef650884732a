// support_terminal_test.cpp - the terminal of the end-to-end tests shows what a real one would
// show.
#include "support/terminal_session.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <termios.h>

namespace
{

terminal_options make_shell(const std::string& script, int rows = 24, int columns = 80)
{
    return {.command = {"sh", "-c", script}, .rows = rows, .columns = columns, .home = "/"};
}

TEST(support_terminal, shows_plain_text_where_it_was_written)
{
    terminal_session session{make_shell("printf 'one\\r\\n  two'; read end")};
    ASSERT_TRUE(session.wait_for_text("two"));
    EXPECT_EQ(session.screen().text(0, 0, 5), "one  ");
    EXPECT_EQ(session.screen().text(1, 0, 6), "  two ");
    EXPECT_EQ(session.row(0).size(), 80U);
}

TEST(support_terminal, recognises_colours_bold_and_reverse)
{
    terminal_session session{make_shell(
        "printf '\\033[31;44mA\\033[0;1mB\\033[0;7mC\\033[0;38;5;200mD\\033[0mE.'; read end")};
    ASSERT_TRUE(session.wait_for_text("ABCDE."));
    EXPECT_EQ(session.cell(0, 0), (screen_cell{.text = "A", .foreground = 1, .background = 4}));
    EXPECT_EQ(session.cell(0, 1), (screen_cell{.text = "B", .bold = true}));
    EXPECT_EQ(session.cell(0, 2), (screen_cell{.text = "C", .reverse = true}));
    EXPECT_EQ(session.cell(0, 3), (screen_cell{.text = "D", .foreground = 200}));
    EXPECT_EQ(session.cell(0, 4), (screen_cell{.text = "E"}));
}

TEST(support_terminal, bold_does_not_change_the_colour)
{
    terminal_session session{make_shell("printf '\\033[1;33;40mX'; read end")};
    ASSERT_TRUE(session.wait_for_text("X"));
    EXPECT_EQ(session.cell(0, 0),
              (screen_cell{.text = "X", .foreground = 3, .background = 0, .bold = true}));
}

TEST(support_terminal, shows_line_drawing_as_box_characters)
{
    for (const char* type : {"screen-256color", "linux"}) {
        terminal_options options =
            make_shell("printf '\\033(0tvuqx\\033(B.'; tput smacs; tput rmacs; read end");
        options.environment["TERM"] = type;
        terminal_session session{options};
        ASSERT_TRUE(session.wait_for_text("├┴┤─│."));
    }
}

TEST(support_terminal, understands_utf8_and_raw_bytes)
{
    terminal_session modern{make_shell("printf '\\302\\273.'; read end")};
    EXPECT_TRUE(modern.wait_for_text("»."));
    terminal_options options = make_shell("printf '\\273.'; read end");
    options.utf8 = false;
    terminal_session old{options};
    ASSERT_TRUE(old.wait_until([&] { return old.raw_output() == "\273."; }, "a raw byte"));
}

TEST(support_terminal, counts_bells_and_sees_cursor_and_alternate_screen)
{
    terminal_session session{make_shell("tput smcup; tput civis; printf '\\a\\a.'; read end; "
                                        "tput cnorm; tput rmcup; printf 'back'; read end")};
    ASSERT_TRUE(session.wait_for_text("."));
    EXPECT_EQ(session.bells(), 2);
    EXPECT_FALSE(session.screen().cursor_visible());
    EXPECT_TRUE(session.screen().alternate_screen());
    session.send_key(named_key::enter);
    ASSERT_TRUE(session.wait_for_text("back"));
    EXPECT_TRUE(session.screen().cursor_visible());
    EXPECT_FALSE(session.screen().alternate_screen());
}

TEST(support_terminal, a_restored_cursor_keeps_its_last_ordered_visibility)
{
    terminal_session session{make_shell("tput civis; tput sc; tput cnorm; tput rc; printf 'A'; "
                                        "read go; printf '\\033[?2'; printf '5lB'; read end")};
    ASSERT_TRUE(session.wait_for_text("A"));
    EXPECT_TRUE(session.screen().cursor_visible());
    session.send("\r");
    ASSERT_TRUE(session.wait_for_text("B"));
    EXPECT_FALSE(session.screen().cursor_visible());
}

TEST(support_terminal, the_program_is_told_of_every_new_size)
{
    terminal_session session{
        make_shell("trap 'printf \"\\r\\n[%s]\" \"$(stty size)\"' WINCH; printf 'ready'; "
                   "while :; do read line && exit; done",
                   10, 40)};
    ASSERT_TRUE(session.wait_for_text("ready"));
    session.resize(30, 100);
    ASSERT_TRUE(session.wait_for_text("[30 100]"));
    EXPECT_EQ(session.screen().rows(), 30);
    EXPECT_EQ(session.row(29).size(), 100U);
    session.resize(3, 9);
    ASSERT_TRUE(session.wait_for_text("[3 9]"));
}

TEST(support_terminal, the_screen_survives_any_size)
{
    terminal_session session{make_shell("yes $(seq 100) | head -n 200; tput smcup; printf 'full'; "
                                        "read end; tput rmcup; printf 'over'; read end")};
    ASSERT_TRUE(session.wait_for_text("full"));
    for (int size = 1; size < 60; size += 7) {
        session.resize(size, 61 - size);
        session.resize(61 - size, size);
        EXPECT_EQ(session.screen().rows(), 61 - size);
    }
    session.resize(1, 1);
    session.resize(24, 80);
    session.send("\r");
    ASSERT_TRUE(session.wait_for_text("over"));
}

TEST(support_terminal, sends_the_keys_of_the_mode_that_the_program_chose)
{
    terminal_session session{
        make_shell("stty raw -echo; printf 'plain'; dd bs=1 count=3 2>/dev/null | "
                   "od -An -c; tput smkx; printf 'keypad'; dd bs=1 count=3 "
                   "2>/dev/null | od -An -c; printf 'end'; sleep 1000")};
    ASSERT_TRUE(session.wait_for_text("plain"));
    session.send_key(named_key::up);
    ASSERT_TRUE(session.wait_for_text("033   [   A"));
    ASSERT_TRUE(session.wait_for_text("keypad"));
    session.send_key(named_key::down);
    ASSERT_TRUE(session.wait_for_text("033   O   B"));
}

TEST(support_terminal, sends_control_and_meta_letters)
{
    terminal_session session{
        make_shell("stty raw -echo; printf 'go'; dd bs=1 count=8 2>/dev/null | "
                   "od -An -tx1; printf 'end'; sleep 1000")};
    ASSERT_TRUE(session.wait_for_text("go"));
    session.send_control('x');
    session.send_control('A');
    session.send_meta('a');
    session.send_meta('a', meta_form::high_bit);
    session.send_meta('a', meta_form::utf8);
    session.send_key(named_key::backspace);
    ASSERT_TRUE(session.wait_for_text("18 01 1b 61 e1 c3 a1 7f"));
}

TEST(support_terminal, tells_how_the_program_ended)
{
    terminal_session returned{make_shell("echo done; exit 7")};
    const std::optional<int> status = returned.wait_for_exit();
    ASSERT_TRUE(status);
    EXPECT_TRUE(WIFEXITED(*status));
    EXPECT_EQ(WEXITSTATUS(*status), 7);
    EXPECT_TRUE(returned.shows("done"));

    terminal_session killed{make_shell("kill -TERM $$")};
    const std::optional<int> death = killed.wait_for_exit();
    ASSERT_TRUE(death);
    ASSERT_TRUE(WIFSIGNALED(*death));
    EXPECT_EQ(WTERMSIG(*death), SIGTERM);
}

TEST(support_terminal, a_program_that_cannot_start_says_so)
{
    terminal_session session{terminal_options{.command = {"/nowhere/at/all"}, .home = "/"}};
    const std::optional<int> status = session.wait_for_exit();
    ASSERT_TRUE(status);
    EXPECT_EQ(WEXITSTATUS(*status), 127);
    EXPECT_EQ(session.error_text(), "cannot start the program\n");
}

TEST(support_terminal, keeps_standard_error_off_the_screen)
{
    terminal_session session{make_shell("echo to the side >&2; echo to the screen; read end")};
    ASSERT_TRUE(session.wait_for_text("to the screen"));
    EXPECT_FALSE(session.shows("to the side"));
    EXPECT_EQ(session.error_text(), "to the side\n");
}

TEST(support_terminal, gives_the_program_only_the_environment_it_names)
{
    setenv("SUPPORT_TERMINAL_SECRET", "leaked", 1);
    terminal_options options =
        make_shell("echo \"<$SUPPORT_TERMINAL_SECRET|$TERM|$HOME|$LC_ALL|$TZ|$MINE>\"; "
                   "echo fds: $(ls /proc/self/fd | wc -l); pwd; read end");
    options.environment["MINE"] = "given";
    options.unset.insert("TZ");
    options.folder = "/usr";
    terminal_session session{options};
    ASSERT_TRUE(session.wait_for_text("/usr"));
    EXPECT_TRUE(session.shows("<|screen-256color|/|C.UTF-8||given>")) << session.description();
    // Input, output, errors, and the folder that ls reads.
    EXPECT_TRUE(session.shows("fds: 4")) << session.description();
    unsetenv("SUPPORT_TERMINAL_SECRET");
}

TEST(support_terminal, shows_the_line_settings)
{
    terminal_session session{
        make_shell("printf 'cooked'; read go; stty -echo -icanon; printf 'raw'; "
                   "read end")};
    ASSERT_TRUE(session.wait_for_text("cooked"));
    EXPECT_NE(session.line_settings().c_lflag & ICANON, 0U);
    EXPECT_NE(session.line_settings().c_lflag & ECHO, 0U);
    session.send("\r");
    ASSERT_TRUE(session.wait_for_text("raw"));
    EXPECT_EQ(session.line_settings().c_lflag & (ICANON | ECHO), 0U);
}

TEST(support_terminal, reads_whole_writes)
{
    // One write of several screens; the expected text is at its very beginning.
    terminal_session session{make_shell("perl -e '$| = 1; $text = \"\\e[H\" . \"first\" . "
                                        "\"\\e[2;1H.\" x 3000 . \"\\e[24;76Hlast\"; "
                                        "syswrite(STDOUT, $text)'; read end")};
    ASSERT_TRUE(session.wait_for_text("first"));
    EXPECT_EQ(session.screen().text(23, 75, 4), "last");
    EXPECT_EQ(session.raw_output().find("everything-before-this"), std::string::npos);
}

TEST(support_terminal, a_wait_that_fails_shows_the_screen)
{
    terminal_session session{make_shell("printf 'nothing else'; read end", 3, 20)};
    ASSERT_TRUE(session.wait_for_text("nothing else"));
    const auto result = session.wait_for_text("absent", std::chrono::milliseconds{1});
    EXPECT_FALSE(result);
    EXPECT_STREQ(result.message(), "never: \"absent\" is shown\nscreen of 3 x 20, 0 bells:\n"
                                   "  0 |nothing else        |\n"
                                   "  1 |                    |\n"
                                   "  2 |                    |\n");
}

TEST(support_terminal, kills_what_still_runs)
{
    pid_t leader = 0;
    {
        terminal_session session{make_shell("sleep 1000 & printf 'up'; wait")};
        ASSERT_TRUE(session.wait_for_text("up"));
        leader = session.process_id();
    }
    EXPECT_EQ(kill(leader, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST(terminal_screen, joins_a_character_that_comes_in_pieces)
{
    terminal_screen screen(2, 10, true);
    for (const char byte : std::string_view{"a┌\xC3\xA4"})
        screen.feed({&byte, 1});
    EXPECT_EQ(screen.text(0, 0, 4), "a┌\xC3\xA4 ");
}

TEST(terminal_screen, shows_nothing_of_what_was_broken_off)
{
    for (const char* cut : {"\xE2", "\xE2\x94", "\xC3", "\033[2", "\033", "\033[1;3"}) {
        terminal_screen screen(2, 10, true);
        screen.feed(cut);
        screen.forget_beginning();
        screen.feed("┌B");
        EXPECT_EQ(screen.text(0, 0, 3), "┌B ");
    }
}

TEST(terminal_screen, takes_any_amount_of_output_at_once)
{
    terminal_screen screen{24, 80, true};
    screen.feed(std::string(8'000'000, 'x') + "\r\nlast");
    EXPECT_EQ(screen.text(23, 0, 4), "last");
}

} // namespace
