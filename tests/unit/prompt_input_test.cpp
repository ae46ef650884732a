// prompt_input_test.cpp - how a prompt looks, what keys leave in it, and how much of a preset fits.
#include "unit/net_fixture.hpp"
#include "unit/own_clock.hpp"

#include "ui/keys.hpp"
#include "ui/prompt.hpp"

#include <algorithm>
#include <initializer_list>
#include <iterator>

namespace
{

constexpr const char* hint = "RET=OK - ESC=CANCEL";

class prompt_preset : public net_test
{
protected:
    /// The answer to a prompt for `max` characters whose preset is accepted unchanged.
    static std::string answer(int max, const char* preset)
    {
        type_ahead("\n");
        const heap_text text{prompt_input(max, "Question", hint, preset)};
        return text ? text.get() : "(none)";
    }
};

TEST_F(prompt_preset, is_cut_to_one_character_less_than_the_size)
{
    EXPECT_EQ(answer(8, "preset"), "preset");
    EXPECT_EQ(answer(7, "preset"), "preset");
    EXPECT_EQ(answer(6, "preset"), "prese");
    EXPECT_EQ(answer(2, "preset"), "p");
    EXPECT_EQ(answer(8, nullptr), "(none)");
}

TEST_F(prompt_preset, is_left_out_where_nothing_fits)
{
    for (const int max : {1, 0, -3})
        EXPECT_EQ(answer(max, "preset"), "(none)") << max;
}

using rows_of_box = std::vector<std::string>;

class prompt_box : public net_test
{
protected:
    /// The box on the terminal when the prompt first looks for a key.
    static rows_of_box box(int max, const char* question, const char* hint_text,
                           const char* preset = nullptr, prompt_asker* asker = nullptr)
    {
        rows_of_box rows;
        own_clock clock;
        clock.on_pause([&](long) {
            for (int row = LINES / 2 - 4; row < LINES / 2 - 1; ++row)
                rows.push_back(terminal_row(row));
            ungetch(key_escape);
        });
        EXPECT_EQ(prompt_input(max, question, hint_text, preset, asker), nullptr);
        return rows;
    }

private:
    /// A row without the panes beside the box; frames as "-", "|" and "+".
    static std::string terminal_row(int row)
    {
        std::string text;
        for (int column = COLS / 2 - 25; column < COLS / 2 + 25; ++column)
            text += cell_text(mvwinch(curscr, row, column));
        text.erase(text.find_last_not_of(' ') + 1);
        return text;
    }
    static char cell_text(chtype cell)
    {
        const char letter = static_cast<char>(cell & A_CHARTEXT);
        if ((cell & A_ALTCHARSET) == 0)
            return letter;
        return letter == 'q' ? '-' : letter == 'x' ? '|' : '+';
    }
};

std::string make_blanks(int count)
{
    return std::string(static_cast<std::size_t>(count), ' ');
}

TEST_F(prompt_box, is_as_wide_as_its_longest_text)
{
    EXPECT_EQ(box(32, "Question", "hint"),
              (rows_of_box{make_blanks(9) + "+-[ Question ]-------------------+",
                           make_blanks(9) + "| _                              |",
                           make_blanks(9) + "+-----------------------[ hint ]-+"}));
}

TEST_F(prompt_box, is_wide_enough_for_its_question)
{
    EXPECT_EQ(box(2, "A long question", "hint"),
              (rows_of_box{make_blanks(15) + "+-[ A long question ]+",
                           make_blanks(15) + "| _                  |",
                           make_blanks(15) + "+-----------[ hint ]-+"}));
}

TEST_F(prompt_box, is_wide_enough_for_its_hint_which_covers_the_corner)
{
    EXPECT_EQ(box(2, "Why", "a longer hint"),
              (rows_of_box{make_blanks(17) + "+-[ Why ]---------+",
                           make_blanks(17) + "| _               |",
                           make_blanks(17) + "[ a longer hint ]-+"}));
    EXPECT_EQ(box(2, "Question", "123456789"), // no wider than the question makes it
              (rows_of_box{make_blanks(19) + "+-[ Question ]+", make_blanks(19) + "| _           |",
                           make_blanks(19) + "[ 123456789 ]-+"}));
}

TEST_F(prompt_box, has_its_cursor_on_the_frame_when_its_line_is_full)
{
    EXPECT_EQ(
        box(16, "Question", "hint", "fifteen letters"),
        (rows_of_box{make_blanks(17) + "+-[ Question ]---+", make_blanks(17) + "| fifteen letters_",
                     make_blanks(17) + "+-------[ hint ]-+"}));
}

/// The lower frame of a box for 31 characters with this name on it.
std::string make_named_frame(const std::string& name)
{
    return make_blanks(10) + "+-[ " + name + " ]" + std::string(17 - name.size(), '-') +
           "[ hint ]-+";
}

TEST_F(prompt_box, names_who_asks_beside_the_hint_as_far_as_it_fits)
{
    const std::pair<const char*, const char*> rows[] = {
        {"me", "me"},
        {"sixteen letters!", "sixteen letters!"},
        {"seventeen letters", "seventeen le~ers"},
        {"\033[2J\n\x9B%s", "?[2J ?%s"},
    };
    for (const auto& [name, shown] : rows) {
        prompt_asker asker{name};
        EXPECT_EQ(box(31, "Question", "hint", nullptr, &asker).back(), make_named_frame(shown));
    }
}

TEST_F(prompt_box, leaves_out_a_name_that_has_no_space)
{
    prompt_asker asker{"server"};
    EXPECT_EQ(box(19, "Question", "hint", nullptr, &asker).back(),
              make_blanks(16) + "+-[ ~ver ]-[ hint ]-+");
    EXPECT_EQ(box(18, "Question", "hint", nullptr, &asker).back(),
              make_blanks(16) + "+---------[ hint ]-+");
    prompt_asker nobody{""};
    EXPECT_EQ(box(18, "Question", "hint", nullptr, &nobody).back(),
              make_blanks(16) + "+---------[ hint ]-+");
}

class prompt_keys : public net_test
{
protected:
    /// The answer to a prompt for at most 11 characters after these keys and Enter.
    static std::string answer_to(std::initializer_list<int> keys)
    {
        ungetch('\n');
        std::for_each(std::rbegin(keys), std::rend(keys), ungetch);
        const heap_text text{prompt_input(12, "Question", hint, nullptr)};
        return text ? text.get() : "(none)";
    }
};

TEST_F(prompt_keys, enter_their_low_eight_bits_whatever_they_are)
{
    EXPECT_EQ(answer_to({KEY_DOWN, KEY_UP, KEY_F(1), 0x18, 0xFC}), "\x02\x03\x09\x18\xFC");
}

TEST_F(prompt_keys, are_ignored_when_they_do_not_fit)
{
    EXPECT_EQ(answer_to({'1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', KEY_DOWN}),
              "123456789ab");
}

TEST_F(prompt_keys, erase_nothing_before_the_first_character)
{
    EXPECT_EQ(answer_to({KEY_BACKSPACE, KEY_BACKSPACE, 'a', KEY_BACKSPACE, KEY_BACKSPACE, 'b'}),
              "b");
    EXPECT_EQ(answer_to({'a', KEY_BACKSPACE}), "(none)");
}

} // namespace
