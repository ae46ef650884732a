// service_menu_test.cpp - which keys choose an item of a menu.
#include "unit/net_fixture.hpp"
#include "unit/own_clock.hpp"

#include "services/service_menu.hpp"
#include "ui/keys.hpp"

#include <algorithm>

namespace
{

constexpr menu_entry entries[] = {{'1', "one"}, {'2', "two"}, {'3', "three"}};

class menu_keys : public net_test
{
protected:
    /// What the menu returns for these keys, one after the other.
    char choice(const std::vector<int>& keys)
    {
        std::for_each(keys.rbegin(), keys.rend(), [](int key) { ungetch(key); });
        return service_menu(entries, 35, 5, "[ hint ]");
    }

    own_clock clock; // no pause takes time
};

TEST_F(menu_keys, choose_if_they_are_in_the_table)
{
    for (const menu_entry& entry : entries)
        EXPECT_EQ(choice({entry.key}), entry.key);
}

TEST_F(menu_keys, have_no_effect_outside_the_table)
{
    std::vector<int> keys = {'0', '4', '5', '9', '/', ':', 'a', ' ', key_enter, '\t'};
    keys.insert(keys.end(), {0x08, 0x18, 0xB1, KEY_DOWN, KEY_F(1), KEY_BACKSPACE, '3'});
    EXPECT_EQ(choice(keys), '3');
    EXPECT_EQ(getch(), ERR);
}

TEST_F(menu_keys, escape_chooses_nothing)
{
    EXPECT_EQ(choice({'x', key_escape, '1'}), '\0');
    EXPECT_EQ(getch(), '1');
}

} // namespace
