// pager_list_test.cpp - the pager list's window alone: what it shows on terminals of any size, and
// what it leaves.
#include "unit/net_fixture.hpp"

#include "services/pager_list.hpp"
#include "ui/screen.hpp"
#include "ui/window.hpp"

#include <sys/time.h>

namespace
{

/// What the terminal showed when the list waited for a key.
struct seen_list {
    int rounds = 0;
    std::string rows[60];
};
seen_list seen;

/// A signal handler that runs while the list waits: looks at the screen, then presses Escape.
void look_and_escape(int)
{
    ++seen.rounds;
    for (int row = 0; row < LINES && row < 60; ++row) {
        seen.rows[row].clear();
        for (int column = 0; column < COLS; ++column)
            seen.rows[row] += static_cast<char>(mvwinch(curscr, row, column) & A_CHARTEXT);
    }
    ungetch(27);
}

class pager_list : public net_test
{
protected:
    pager_list()
    {
        seen = seen_list{};
        struct sigaction action = {};
        action.sa_handler = look_and_escape;
        sigaction(SIGALRM, &action, &action_before);
    }

    ~pager_list() override
    {
        setitimer(ITIMER_REAL, &never, nullptr);
        sigaction(SIGALRM, &action_before, nullptr);
        resize_term(24, 160);
    }

    pager_list(const pager_list&) = delete;
    pager_list& operator=(const pager_list&) = delete;

    static void show(const std::string& text)
    {
        const itimerval soon = {{0, 0}, {0, 1'000}};
        setitimer(ITIMER_REAL, &soon, nullptr);
        pager_list_show(text.c_str());
    }

    /// The inside of a row of the list, counted from 0 below its heading.
    static std::string record(int row)
    {
        return seen.rows[6 + row].substr(static_cast<std::size_t>(COLS / 2 - 13) + 1, 24);
    }

    static void build(int lines, int columns)
    {
        for (WINDOW** window :
             {&app_state.key_line, &app_state.settings_win, &app_state.status_pane,
              &app_state.message_pane, &app_state.server_pane, &app_state.help_win}) {
            if (*window != nullptr)
                delwin(*window);
            *window = nullptr;
        }
        resize_term(lines, columns);
        screen_build();
    }

private:
    static constexpr itimerval never = {};
    struct sigaction action_before = {};
};

std::string repeat(std::string_view text, int count)
{
    std::string all;
    for (int index = 0; index < count; ++index)
        all += text;
    return all;
}

TEST_F(pager_list, shows_fields_in_their_columns)
{
    show("D-AIQA\tFRA\tLH400~^\t^\tBA117");
    EXPECT_EQ(record(0).substr(0, 8), "D-AIQA  ");
    EXPECT_EQ(record(0).substr(9, 4), "FRA ");
    EXPECT_EQ(record(0).substr(14), "LH400     ");
    EXPECT_EQ(record(1).substr(0, 8), "        ");
    EXPECT_EQ(record(1).substr(9, 4), "    ");
    EXPECT_EQ(record(1).substr(14), "BA117     ");
    EXPECT_EQ(seen.rounds, 1);
}

TEST_F(pager_list, shows_as_many_records_as_there_are_lines_less_four)
{
    build(30, 160);
    show("R0" + repeat("~Rn\tA\tF", 40));
    EXPECT_EQ(record(0).substr(0, 8), "R0      ");
    EXPECT_EQ(record(23).substr(0, 8), "Rn      "); // the last line of the terminal
    EXPECT_NE(record(23).substr(14, 2), "F~");
}

TEST_F(pager_list, puts_the_rest_of_the_text_into_its_last_record)
{
    build(7, 160); // three records, one of them on the terminal
    show("A\tB\tC");
    EXPECT_EQ(record(0).substr(0, 8), "A       ");
    build(5, 160); // one record only
    seen = seen_list{};
    show("A\tB\tC~D\tE\tF");
    EXPECT_EQ(seen.rounds, 1);
}

TEST_F(pager_list, survives_any_text_on_any_terminal)
{
    const std::string texts[] = {"",
                                 "~",
                                 "\t",
                                 "^",
                                 "~\t~\t\t~\t\t\t~",
                                 repeat("~", 4096),
                                 repeat("\t", 4096),
                                 repeat("a~", 2048),
                                 repeat("abc", 1365),
                                 repeat("\xff\t", 2048),
                                 repeat("%n%s\t", 800)};
    for (const auto& [lines, columns] : {std::pair{24, 160}, {4, 20}, {1, 1}, {50, 26}, {12, 27}}) {
        build(lines, columns);
        for (const std::string& text : texts) {
            seen = seen_list{};
            show(text);
            EXPECT_EQ(seen.rounds, 1) << lines << " x " << columns << " of " << text.size();
        }
    }
}

TEST_F(pager_list, closes_an_open_popup_for_good)
{
    app_state.popup_win = popup_open(10, 5, 2, 2, true, colour::frame, true);
    app_state.dialog_win = popup_open(10, 5, 20, 2, true, colour::frame, true);
    show("A\tB\tC");
    EXPECT_EQ(app_state.popup_win, nullptr);
    EXPECT_EQ(app_state.dialog_win, nullptr);
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(beeps(), 0U);
}

} // namespace
