// mail_clock_test.cpp - when mails are sent, whatever the clock does.
#include "unit/mail_fixture.hpp"

namespace
{

using texts = mail_texts;
using std::chrono::hours;
using std::chrono::minutes;

constexpr std::int64_t day = mailed_day;

TEST_F(mailing, neither_repeats_nor_forgets_a_day_when_the_clock_jumps)
{
    subscribe("a@b");
    run_until_told("1 mail about 2026-01-05 sent");
    EXPECT_EQ(new_mails(), texts{"a@b 05/01"});
    for (const int jump : {-86400, -86400 * 20000, 86400 * 20001, -3600, 3600, -600, 600}) {
        moment += jump;
        settle();
    }
    EXPECT_EQ(new_mails(), texts{});
    pass(hours{24});
    run_until_told("1 mail about 2026-01-06 sent");
    EXPECT_EQ(new_mails(), texts{"a@b 06/01"});
}

TEST_F(mailing, begins_again_after_the_clock_was_years_ahead)
{
    subscribe("a@b");
    moment += std::time_t{3650} * 86400;
    run_until_told("1 mail about 2036-01-03 sent");
    new_mails();
    moment -= std::time_t{3650} * 86400;
    settle();
    for (int i = 0; i < 61; ++i) {
        pass(minutes{1});
        turn();
    }
    settle();
    EXPECT_EQ(new_mails(), texts{}) << "that of this day would be a guess";
    pass(hours{23});
    run_until_told("1 mail about 2026-01-06 sent");
    EXPECT_EQ(new_mails(), texts{"a@b 06/01"});
}

TEST_F(mailing, does_not_trust_a_clock_that_has_just_begun)
{
    subscribe("a@b", 0, day);
    moment = 86400 * 400; // a computer without a clock of its own
    for (int i = 0; i < 30; ++i) {
        pass(minutes{1});
        turn();
    }
    moment = tovrik::mail_day_begin(day + 1) + 43200;
    settle();
    EXPECT_EQ(new_mails(), texts{}) << "that day was mailed already";
}

} // namespace
