// keys_test.cpp - which bytes of the terminal become which keys.
#include "ui/keys.hpp"

#include "base/owners.hpp"
#include "unit/own_faults.hpp"

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

using key_list = std::vector<int>;

/// Curses on a pipe into which a test types.
class key_reading : public testing::Test
{
protected:
    explicit key_reading(const char* locale = "C.UTF-8") : output(std::tmpfile())
    {
        std::setlocale(LC_CTYPE, locale);
        int ends[2] = {};
        EXPECT_EQ(pipe(ends), 0);
        input.reset(fdopen(ends[0], "r"));
        keyboard = unique_fd{ends[1]};
        terminal = newterm("xterm-256color", output.get(), input.get());
        EXPECT_NE(terminal, nullptr);
        meta(stdscr, TRUE);
        keypad(stdscr, TRUE);
        nodelay(stdscr, TRUE);
        keys_init();
    }
    ~key_reading() override
    {
        endwin();
        delscreen(terminal);
        std::setlocale(LC_CTYPE, "C");
    }
    key_reading(const key_reading&) = delete;
    key_reading& operator=(const key_reading&) = delete;

    void type(std::string_view bytes) const
    {
        EXPECT_EQ(write(keyboard.get(), bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }
    static key_list read_all()
    {
        key_list keys;
        for (int key = key_read(nullptr); key != ERR; key = key_read(nullptr))
            keys.push_back(key);
        return keys;
    }
    key_list read_typed(std::string_view bytes) const
    {
        type(bytes);
        return read_all();
    }
    bool is_read() const
    {
        int waiting = 0;
        return ioctl(keyboard.get(), FIONREAD, &waiting) == 0 && waiting == 0;
    }
    /// Types `rest` as soon as `begin` has been read.
    key_list read_in_two_parts(std::string_view begin, std::string_view rest) const
    {
        type(begin);
        std::thread typist{[&] {
            while (!is_read())
                std::this_thread::yield();
            type(rest);
        }};
        key_list keys = read_all();
        typist.join();
        for (const int key : read_all())
            keys.push_back(key);
        return keys;
    }

private:
    unique_file input;
    unique_file output;
    unique_fd keyboard;
    SCREEN* terminal = nullptr;
};

TEST_F(key_reading, takes_a_character_of_three_or_four_bytes_for_one_unknown_key)
{
    for (const char* character : {"中", "ก", "語", "영", "\xEF\xBF\xBD", "😀", "\xF4\x8F\xBF\xBF"})
        EXPECT_EQ(read_typed(character), key_list{key_unknown}) << character;
    EXPECT_EQ(read_typed("a中b😀c"), (key_list{'a', key_unknown, 'b', key_unknown, 'c'}));
}

TEST_F(key_reading, gives_a_prompt_one_question_mark_for_an_unknown_key)
{
    EXPECT_EQ(key_unknown & 0xFF, '?');
    EXPECT_GT(key_unknown, KEY_MAX);
}

TEST_F(key_reading, takes_a_lone_high_byte_for_a_letter_with_alt)
{
    for (int byte = 0xE0; byte <= 0xFF; ++byte) {
        const char typed = static_cast<char>(byte);
        EXPECT_EQ(read_typed({&typed, 1}), key_list{byte});
    }
    EXPECT_EQ(read_typed("\xE4\xE9"), (key_list{0xE4, 0xE9}));
    EXPECT_EQ(read_typed("\xE4x\xF4\n"), (key_list{0xE4, 'x', 0xF4, key_enter}));
    EXPECT_EQ(read_typed("\xE4\033OA"), (key_list{0xE4, KEY_UP}));
    EXPECT_EQ(read_typed("\xE4\033d"), (key_list{0xE4, 0xE4}));
    EXPECT_EQ(read_typed("\xE4中"), (key_list{0xE4, key_unknown}));
}

TEST_F(key_reading, takes_letters_of_two_bytes_and_with_escape_as_before)
{
    EXPECT_EQ(read_typed("ä\xC2\xBF"), (key_list{0xE4, 0xBF})) << "not the beginning of another";
    EXPECT_EQ(read_typed("\033d\xC2\xBF"), (key_list{0xE4, 0xBF}));
    EXPECT_EQ(read_typed("éä中"), (key_list{0xE9, 0xE4, key_unknown}));
    EXPECT_EQ(read_typed("\xE4ä"), (key_list{0xE4, 0xE4}));
    EXPECT_EQ(read_typed("\xE4\xC2\xBF"), (key_list{0xE4, 0xBF}));
}

TEST_F(key_reading, takes_a_character_that_breaks_off_for_an_unknown_key)
{
    EXPECT_EQ(read_typed("\xE4\xB8"), key_list{key_unknown});
    EXPECT_EQ(read_typed("\xE4\xB8x"), (key_list{key_unknown, 'x'}));
    EXPECT_EQ(read_typed("\xF0\x9F\x98\033OA"), (key_list{key_unknown, KEY_UP}));
}

TEST_F(key_reading, waits_for_the_rest_of_a_character)
{
    constexpr int attempts = 200; // on a busy machine the rest may come too late
    for (const char* parts : {"\xE4|\xB8\xAD", "\xE4\xB8|\xAD", "\xF0\x9F|\x98\x80"}) {
        const std::string_view whole{parts};
        const std::size_t cut = whole.find('|');
        int whole_ones = 0;
        for (int attempt = 0; attempt < attempts && whole_ones == 0; ++attempt) {
            const key_list keys = read_in_two_parts(whole.substr(0, cut), whole.substr(cut + 1));
            whole_ones += keys == key_list{key_unknown} ? 1 : 0;
        }
        EXPECT_EQ(whole_ones, 1) << parts;
    }
}

TEST_F(key_reading, does_not_read_keys_that_were_given_back_as_bytes)
{
    const key_list keys = {0xE4, 0xB8, 0xAD, key_unknown, key_escape, 'd', KEY_UP, key_enter, 8};
    for (auto key = keys.rbegin(); key != keys.rend(); ++key)
        key_give_back(*key);
    EXPECT_EQ(read_all(), keys);
}

TEST_F(key_reading, is_not_what_drawing_waits_for)
{
    type("abc");
    const own_fault seen({faulty_call::poll, EINTR, "", 0, every_call});
    for (int row = 0; row < 10; ++row) {
        mvaddstr(row, 4, "drawn");
        refresh();
        EXPECT_EQ(mvwinch(curscr, row, 4) & A_CHARTEXT, chtype{'d'});
    }
    EXPECT_EQ(own_fault::hits(), 0) << "curses has looked whether keys wait";
}

class key_reading_in_8_bits : public key_reading
{
protected:
    key_reading_in_8_bits() : key_reading("C") {}
};

TEST_F(key_reading_in_8_bits, takes_each_byte_for_a_key)
{
    EXPECT_EQ(read_typed("\xE4\xB8\xAD"), (key_list{0xE4, 0xB8, 0xAD}));
}

} // namespace
