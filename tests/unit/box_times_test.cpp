// box_times_test.cpp - how often boxes look for keys, and when they stop waiting.
#include "unit/net_fixture.hpp"
#include "unit/own_clock.hpp"

#include "services/pager_list.hpp"
#include "services/service_menu.hpp"
#include "ui/keys.hpp"
#include "ui/prompt.hpp"

#include <functional>
#include <utility>

namespace
{

constexpr const char* hint = "RET=OK - ESC=CANCEL";
constexpr menu_entry entries[] = {{'1', "one"}, {'2', "two"}};

class box_times : public net_test
{
protected:
    static char menu()
    {
        return service_menu(entries, 35, 4, "[ hint ]");
    }

    /// The prompt's answer when these keys are typed so many milliseconds after it opened.
    static std::string prompt(int max, const std::vector<std::pair<long, int>>& keys)
    {
        own_clock clock;
        std::size_t next = 0;
        clock.on_pause([&](long elapsed_ms) {
            if (next < keys.size() && elapsed_ms >= keys[next].first)
                ungetch(keys[next++].second);
        });
        const heap_text text{prompt_input(max, "Question", hint, nullptr)};
        return text ? text.get() : "(none)";
    }
};

TEST_F(box_times, a_menu_waits_for_ten_whole_seconds)
{
    {
        const own_clock clock;
        EXPECT_EQ(menu(), '\0');
        EXPECT_EQ(own_clock::pause_us(), 15'000);
        EXPECT_EQ(own_clock::elapsed_ms(), 11'010); // the tenth second still counts
    }
    const own_clock late_in_a_second{900};
    EXPECT_EQ(menu(), '\0');
    EXPECT_EQ(own_clock::elapsed_ms(), 10'110);
}

TEST_F(box_times, a_key_without_a_meaning_does_not_prolong_a_menu)
{
    own_clock clock;
    clock.on_pause([](long elapsed_ms) {
        if (elapsed_ms == 9'000)
            ungetch('x');
    });
    EXPECT_EQ(menu(), '\0');
    EXPECT_EQ(own_clock::elapsed_ms(), 11'010);
}

TEST_F(box_times, a_menu_takes_a_key_at_the_last_moment)
{
    own_clock clock;
    clock.on_pause([](long elapsed_ms) {
        if (elapsed_ms == 10'995)
            ungetch('2');
    });
    EXPECT_EQ(menu(), '2');
}

TEST_F(box_times, a_pager_list_is_shown_for_ten_whole_seconds)
{
    const own_clock clock;
    pager_list_show("D-AIQA\tFRA\tLH400");
    EXPECT_EQ(own_clock::pause_us(), 25'000);
    EXPECT_EQ(own_clock::elapsed_ms(), 11'000);
}

TEST_F(box_times, a_prompt_waits_for_ten_whole_seconds)
{
    const own_clock clock;
    EXPECT_EQ(prompt_input(10, "Question", hint, "preset"), nullptr);
    EXPECT_EQ(own_clock::pause_us(), 10'000);
    EXPECT_EQ(own_clock::elapsed_ms(), 11'000);
}

TEST_F(box_times, every_key_renews_the_time_of_a_prompt)
{
    // Backspace on an empty line, a key, a key that does not fit, and the end.
    EXPECT_EQ(
        prompt(2, {{10'500, KEY_BACKSPACE}, {21'000, 'a'}, {31'500, 'b'}, {42'000, key_enter}}),
        "a");
    EXPECT_EQ(prompt(2, {{11'001, 'a'}}), "(none)");
}

TEST_F(box_times, a_clock_that_is_set_back_gives_every_box_ten_more_seconds_at_most)
{
    constexpr long far_back_s = -1'000'000;
    const std::pair<const char*, std::function<void()>> boxes[] = {
        {"a menu", [] { menu(); }},
        {"a list", [] { pager_list_show("D-AIQA\tFRA\tLH400"); }},
        {"a prompt", [] { prompt_input(10, "Question", hint, nullptr); }},
    };
    for (const auto& [name, open] : boxes) {
        SCOPED_TRACE(name);
        own_clock clock;
        bool has_jumped = false;
        clock.on_pause([&](long elapsed_ms) {
            if (elapsed_ms >= 8'000 && !std::exchange(has_jumped, true))
                own_clock::jump(far_back_s);
            ASSERT_LT(elapsed_ms, 30'000) << (ungetch(key_escape), "it stays open");
        });
        open();
        EXPECT_TRUE(has_jumped);
        EXPECT_GE(own_clock::elapsed_ms(), 18'000);
        EXPECT_LE(own_clock::elapsed_ms(), 19'100);
    }
}

TEST_F(box_times, a_prompt_tells_who_asks_whether_it_was_left_alone)
{
    for (const int key : {0, static_cast<int>(key_escape), static_cast<int>(key_enter)}) {
        own_clock clock;
        clock.on_pause([&](long elapsed_ms) {
            if (key != 0 && elapsed_ms >= 9'000)
                ungetch(key);
        });
        prompt_asker asker{"server"};
        EXPECT_EQ(prompt_input(10, "Question", hint, nullptr, &asker), nullptr);
        EXPECT_EQ(asker.was_left_alone, key == 0) << key;
    }
}

} // namespace
