// tovrikd_trouble_test.cpp - tovrikd without room on its disk, without descriptors, and with more
// clients than it takes.
#include "client_crowd.hpp"
#include "storage_fixture.hpp"
#include "tovrikd_place.hpp"

#include "server/protocol/packet.hpp"
#include "server/storage/kept_updates.hpp"
#include "support/open_files.hpp"
#include "support/small_disk.hpp"

#include <algorithm>
#include <sys/resource.h>

namespace
{

namespace kind = tovrik::kind;

class tovrikd_in_trouble : public testing::Test, protected tovrikd_place
{
protected:
    /// Waits until a page has a text, or lacks it. Hears a message before each look.
    bool page_shows(const std::string& path, const std::string& text, bool is_wanted = true)
    {
        const auto end = tovrik::steady_clock::now() + default_patience;
        while (tovrik::steady_clock::now() < end) {
            hear(heard_line("NUMBER " + std::to_string(++heard)));
            if ((ask_web(path).find(text) != std::string::npos) == is_wanted)
                return true;
            usleep(50000);
        }
        return false;
    }

    /// Waits until as many clients have got packets of a kind, each of them as many.
    bool have_got(std::size_t count, std::uint32_t wanted, std::size_t each = 1)
    {
        return crowd.take_in_until([&] { return count_having(wanted, each) == count; });
    }

    std::size_t count_having(std::uint32_t wanted, std::size_t each = 1) const
    {
        return static_cast<std::size_t>(
            std::ranges::count_if(crowd.clients, [wanted, each](const crowd_client& client) {
                return client.count_kind(wanted) == each;
            }));
    }

    client_crowd crowd;
    int heard = 0;
};

TEST_F(tovrikd_in_trouble, serves_on_while_its_disk_is_full)
{
    home.make_folder("state");
    const small_disk disk{home.path_of("state"), 4'000'000};
    if (!disk.is_there())
        GTEST_SKIP() << "nothing may be mounted here";
    write_configuration();
    auto program = start();
    sim_raw_client client{port};
    client.send_text(kind::add_airline, "LH\tBefore");
    ASSERT_TRUE(client.receive_kind(kind::update_accepted));
    ASSERT_TRUE(disk.fill());
    ASSERT_TRUE(page_shows("/healthz", "200 OK", false));
    EXPECT_TRUE(program->complaint_line().starts_with("tovrikd: messages are not kept: "));
    EXPECT_TRUE(client.receive_kind(kind::transmission)) << "it serves on";
    client.send_text(kind::add_airline, "BA\tMeanwhile");
    EXPECT_TRUE(client.receive_kind(kind::update_refused));
    EXPECT_TRUE(
        program->complaint_line().starts_with("tovrikd: a request of a client was not kept: "));
    disk.empty();
    ASSERT_TRUE(page_shows("/healthz", "200 OK"));
    EXPECT_EQ(program->complaint_line(), "tovrikd: messages are kept again");
    client.send_text(kind::add_airline, "AF\tAfterwards");
    EXPECT_TRUE(client.receive_kind(kind::update_accepted));
    program = nullptr;

    tovrik::database in;
    tovrik::reference_data kept;
    ASSERT_EQ(database_open(in, home.path_of("state/tovrikd.sqlite"), tovrik::storage_schema()),
              "");
    EXPECT_EQ(integrity_of(in), "ok");
    EXPECT_EQ(updates_read(in, kept), "");
    EXPECT_NE(kept.find(kind::add_airline, "LH"), nullptr);
    EXPECT_EQ(kept.find(kind::add_airline, "BA"), nullptr);
    EXPECT_NE(kept.find(kind::add_airline, "AF"), nullptr);
}

TEST_F(tovrikd_in_trouble, takes_clients_that_wait_when_it_has_descriptors_again)
{
    constexpr std::size_t few = 20;
    write_configuration();
    const auto program = start();
    crowd.connect(port, 0, few);
    ASSERT_TRUE(have_got(few, kind::capabilities));
    // Sanitizers need descriptors when a call is made for the first time.
    hear(heard_line("BEFORE"));
    ASSERT_TRUE(have_got(few, kind::transmission));
    rlimit usual{};
    ASSERT_EQ(prlimit(program->process_id(), RLIMIT_NOFILE, nullptr, &usual), 0);
    const rlimit scarce{.rlim_cur = 1, .rlim_max = usual.rlim_max};
    ASSERT_EQ(prlimit(program->process_id(), RLIMIT_NOFILE, &scarce, nullptr), 0);
    crowd.connect(port, 0, few);
    hear(heard_line("MEANWHILE"));
    ASSERT_TRUE(have_got(few, kind::transmission, 2)) << "those that are there are served";
    EXPECT_EQ(count_having(kind::capabilities), few);
    ASSERT_EQ(prlimit(program->process_id(), RLIMIT_NOFILE, &usual, nullptr), 0);
    EXPECT_TRUE(have_got(2 * few, kind::capabilities));
}

TEST_F(tovrikd_in_trouble, serves_a_thousand_of_ten_thousand_that_come)
{
    constexpr std::size_t all = 10'000;
    constexpr std::size_t most = 1'000;
    write_configuration("max_clients = " + std::to_string(most) +
                        "\n[access]\nclients_per_address = 0\n");
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    usual.rlim_cur = most; // too few for it, so it has to ask for more
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    const auto program = start();
    if (!allow_open_files(all + most))
        GTEST_SKIP() << "no program here may open " << all + most << " files";
    crowd.connect(port, 0, all);
    ASSERT_TRUE(crowd.take_in_until([this] {
        return std::ranges::count_if(crowd.clients, [](const crowd_client& client) {
                   return client.has_ended;
               }) == all - most;
    }));
    ASSERT_TRUE(have_got(most, kind::capabilities));
    EXPECT_GT(count_having(kind::closing_when_full), 0U);
    EXPECT_TRUE(page_shows("/metrics", "tovrikd_refused_full_total 9000\n"));
    ASSERT_TRUE(crowd.take_in_until([this] {
        return std::ranges::all_of(crowd.clients, [](const crowd_client& client) {
            return client.has_ended || client.count_kind(kind::transmission) > 0;
        });
    }));
}

} // namespace
