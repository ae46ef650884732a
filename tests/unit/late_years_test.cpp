// late_years_test.cpp - the client after 2038, when seconds since 1970 no longer fit into 32 bits.
#include "services/report.hpp"
#include "unit/net_fixture.hpp"
#include "unit/own_clock.hpp"

#include <cstdint>
#include <ctime>

namespace
{

constexpr long to_2040_s = 500'000'000;

class late_years : public net_test
{
protected:
    server_entry& entry = add_server("srv");
    server_end server = connect(entry);
};

TEST_F(late_years, have_days_whose_reports_can_be_asked_for)
{
    type_ahead("1/6/2040\n");
    report_request(entry);
    const wire_packets sent = server.take_packets();
    ASSERT_EQ(sent.size(), 1U);
    // In whatever time zone: half a day before or after midnight in Greenwich.
    EXPECT_NEAR(std::stod(sent[0].text), 2'222'121'601.0, 14 * 3600.0) << sent[0].text;
}

TEST_F(late_years, have_silences_as_long_as_others)
{
    own_clock clock;
    clock.jump(to_2040_s);
    ASSERT_GT(std::time(nullptr), INT32_MAX);
    entry.last_data_time = std::time(nullptr);
    poll_all();
    EXPECT_TRUE(server.take_packets().empty());
    own_clock::jump(601);
    poll_all();
    EXPECT_EQ(server.take_packets().size(), 1U) << "a heartbeat";
    EXPECT_NE(entry.socket_fd, 0);
    own_clock::jump(300);
    poll_all();
    EXPECT_EQ(entry.socket_fd, 0) << "closed";
}

} // namespace
