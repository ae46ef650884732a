// steady_use_test.cpp - what is done again and again takes no more memory and descriptors than
// once.
#include "unit/connection_fixture.hpp"
#include "unit/held_memory.hpp"
#include "unit/own_clock.hpp"
#include "unit/report_replies.hpp"

#include "net/capabilities.hpp"
#include "net/password.hpp"
#include "services/mailing.hpp"
#include "support/compressed.hpp"
#include "support/temp_home.hpp"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace
{

constexpr int first_rounds = 10; // until every buffer has its size
constexpr int rounds = 200;
constexpr std::size_t smallest_block = 32; // with the library's own record of it

class steady_use : public connection_test
{
protected:
    /// Does a thing 200 times, so many at a time. What one of them kept would be seen as 200
    /// blocks.
    static void expect_nothing_kept(const std::function<void()>& act, int at_a_time = 1)
    {
        const int count = rounds / at_a_time;
        for (int round = 0; round < first_rounds && !HasFatalFailure(); ++round)
            act();
        const std::size_t memory = held_memory();
        const std::ptrdiff_t descriptors = count_open_descriptors();
        for (int round = 0; round < count && !HasFatalFailure(); ++round)
            act();
        EXPECT_EQ(count_open_descriptors(), descriptors);
        EXPECT_LT(held_memory(), memory + rounds / 2 * smallest_block);
    }
};

TEST_F(steady_use, of_connections_keeps_nothing)
{
    constexpr int servers = 20; // connected at the same time
    const unique_fd socket{bind_free_port("0.0.0.0")};
    ASSERT_EQ(listen(socket.get(), servers), 0);
    std::vector<server_entry*> entries;
    for (int number = 0; number < servers; ++number) {
        const std::string address = "127.0.0." + std::to_string(100 + number);
        entries.push_back(&add_server(address.c_str(), nullptr, port_of(socket.get())));
    }
    const auto connect_all = [&] {
        for (const server_entry* entry : entries)
            command_connect(*entry);
        ASSERT_TRUE(wait_until([&] {
            return std::ranges::all_of(entries, [](auto* entry) { return entry->connected == 1; });
        }));
        for (server_entry* entry : entries) {
            const unique_fd accepted{accept4(socket.get(), nullptr, nullptr, SOCK_CLOEXEC)};
            EXPECT_TRUE(accepted);
            close_by_server(*entry);
        }
    };
    expect_nothing_kept(connect_all, servers);
}

TEST_F(steady_use, of_reports_keeps_nothing)
{
    const own_clock clock;
    const temp_home folder;
    std::free(app_state.setting_texts[ReportPath]);
    app_state.setting_texts[ReportPath] = owned_text(folder.path() + "/");
    server_entry& entry = add_server("host.example");
    const std::string bytes = compressed(std::string(400, 'x'));
    const std::string header = std::to_string(bytes.size()) + "\t100";
    expect_nothing_kept([&] {
        report_header(entry, header.c_str());
        type_ahead("saved.txt\n");
        report_piece(entry, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    });
    EXPECT_EQ(folder.read_file("saved.txt"), std::string(400, 'x'));
}

TEST_F(steady_use, of_mailings_keeps_nothing)
{
    const own_clock clock;
    server_entry& entry = add_server("host.example");
    const server_end server = connect(entry);
    expect_nothing_kept([&] {
        type_ahead("1me@example.com\n");
        mailing_dialog(entry);
        std::free(std::exchange(entry.UseEMail, nullptr));
        type_ahead("5me@example.com\n4711\n1\n");
        mailing_dialog(entry);
        EXPECT_EQ(server.take_packets().size(), 2U);
        std::free(std::exchange(entry.UseEMail, nullptr));
        std::free(std::exchange(entry.SubCode, nullptr));
    });
}

TEST_F(steady_use, of_mailings_replaces_what_was_typed_before)
{
    const own_clock clock;
    server_entry& entry = add_server("host.example");
    const server_end server = connect(entry);
    expect_nothing_kept([&] {
        type_ahead("2\n\n");
        entry.UseEMail = entry.UseEMail != nullptr ? entry.UseEMail : owned_text("me@example.com");
        entry.SubCode = entry.SubCode != nullptr ? entry.SubCode : owned_text("4711");
        mailing_dialog(entry);
    });
}

TEST_F(steady_use, of_capabilities_keeps_nothing)
{
    server_entry& entry = add_server("host.example");
    const server_end server = connect(entry);
    expect_nothing_kept([&] {
        handle_capabilities(entry, "<?xml?><tovrik><Version>1.23</Version><Mailing>1</Mailing>"
                                   "<ServerUUID>0a1b-2c3d</ServerUUID><Pager>1</Pager></tovrik>");
    });
}

TEST_F(steady_use, of_typed_passwords_keeps_the_last_one_only)
{
    const own_clock clock;
    server_entry& entry = add_server("host.example");
    const server_end server = connect(entry);
    expect_nothing_kept([&] {
        type_ahead("abc\n");
        password_answer(entry);
        EXPECT_EQ(server.take_packets(), (wire_packets{{81, "900150983cd24fb0d6963f7d28e17f72"}}));
    });
}

} // namespace
