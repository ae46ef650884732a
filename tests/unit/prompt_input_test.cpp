// prompt_input_test.cpp - how much of a preset a prompt has room for.
#include "unit/net_fixture.hpp"

#include "ui/prompt.hpp"

namespace
{

constexpr const char* hint = "RET=OK - ESC=CANCEL";

class prompt_preset : public net_test
{
protected:
    /// The answer to a prompt for `max` characters that is taken as it stands.
    static std::string answer(int max, const char* preset)
    {
        type_ahead("\n");
        const heap_text text{prompt_input(max, "Question", hint, preset)};
        return text ? text.get() : "(none)";
    }
};

TEST_F(prompt_preset, is_cut_to_one_character_less_than_the_room)
{
    EXPECT_EQ(answer(8, "preset"), "preset");
    EXPECT_EQ(answer(7, "preset"), "preset");
    EXPECT_EQ(answer(6, "preset"), "prese");
    EXPECT_EQ(answer(2, "preset"), "p");
    EXPECT_EQ(answer(8, nullptr), "(none)");
}

TEST_F(prompt_preset, is_left_out_where_there_is_no_room_at_all)
{
    for (const int max : {1, 0, -3})
        EXPECT_EQ(answer(max, "preset"), "(none)") << max;
}

} // namespace
