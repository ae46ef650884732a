// request_test.cpp - collecting the fields of a request in one text.
#include "unit/net_fixture.hpp"

#include "services/request_text.hpp"

namespace
{

constexpr const char* hint = "RET=OK - ESC=CANCEL";
constexpr request_field required_field = {"Required", 10, hint, nullptr};
constexpr request_field optional_field = {"Optional", 10, hint, ""};
constexpr request_field days_field = {"Days", 10, hint, "XXXXXXX"};

class request : public net_test
{
protected:
    /// Asks for a field while these keys are waiting.
    bool ask(const request_field& field, std::string_view keys)
    {
        type_ahead(keys);
        return request_field_ask(text, field);
    }

    std::string collected() const
    {
        return text ? text.get() : "(none)";
    }

    heap_text text;
};

TEST_F(request, has_tabs_between_its_fields_only)
{
    EXPECT_TRUE(ask(required_field, "one\n"));
    EXPECT_EQ(collected(), "one");
    EXPECT_TRUE(ask(optional_field, "two\n"));
    EXPECT_TRUE(ask(required_field, "three\n"));
    EXPECT_EQ(collected(), "one\ttwo\tthree");
}

TEST_F(request, has_a_tab_for_a_field_left_empty)
{
    EXPECT_TRUE(ask(required_field, "one\n"));
    EXPECT_TRUE(ask(optional_field, "\033"));
    EXPECT_TRUE(ask(optional_field, "\n"));
    EXPECT_EQ(collected(), "one\t\t");
    EXPECT_TRUE(ask(days_field, "abc\033"));
    EXPECT_EQ(collected(), "one\t\t\tXXXXXXX");
}

TEST_F(request, ends_at_a_required_field_without_an_answer)
{
    EXPECT_FALSE(ask(required_field, "\033"));
    EXPECT_FALSE(ask(required_field, "\n"));
    EXPECT_EQ(collected(), "(none)");
    EXPECT_TRUE(ask(required_field, "one\n"));
    EXPECT_FALSE(ask(required_field, "abc\033"));
    EXPECT_EQ(collected(), "one");
}

TEST_F(request, takes_texts_unchanged)
{
    EXPECT_TRUE(ask(required_field, "%s%n\n"));
    EXPECT_TRUE(ask(required_field, "a\tb\n"));
    EXPECT_EQ(collected(), "%s%n\ta\tb");
}

TEST_F(request, cuts_an_answer_to_its_size)
{
    EXPECT_TRUE(ask(required_field, "123456789abc\n"));
    EXPECT_EQ(collected(), "123456789");
}

TEST_F(request, shows_no_message_of_its_own)
{
    EXPECT_FALSE(ask(required_field, "\033"));
    EXPECT_TRUE(ask(days_field, "\033"));
    EXPECT_TRUE(ask(optional_field, "\033"));
    EXPECT_EQ(collected(), "XXXXXXX\t");
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(beeps(), 0U);
}

} // namespace
