// fault_session.cpp - see fault_session.hpp.
#include "e2e/fault_session.hpp"

#include <unistd.h>

void fault_session::start()
{
    settings = servers.settings();
    settings.save_to_one = settings.save_on_exit = true;
    settings.log_folder = "logs";
    if (GetParam().is_by_name)
        settings.servers[1].name += ".example";
    client.home().make_folder("logs");
    for (const auto& [name, value] : faults.environment(preloads))
        how.environment[name] = value;
    ASSERT_TRUE(client.start(settings, how));
}

void fault_session::SetUp()
{
    ASSERT_NO_FATAL_FAILURE(start());
    first = client.connect_selected(servers[0]);
    ASSERT_TRUE(first);
    ASSERT_TRUE(client.wait_for_status(log_opened, pairs::notice));
    transmit_from_first("BEFORE");
}

void fault_session::break_calls()
{
    faults.set(GetParam().wanted);
    for (const fault& other : GetParam().besides)
        faults.add(other);
}

void fault_session::connect_second()
{
    ASSERT_TRUE(select_row(client, 2));
    client.terminal().send_control('l');
}

void fault_session::transmit_from_first(const std::string& flight)
{
    ASSERT_TRUE(first->send(plain_packet(document_of({.flight = flight}))));
    ASSERT_TRUE(wait_for_message_rows(client, lines_of({.flight = flight})));
    logged += text_of({.flight = flight});
    EXPECT_EQ(client.home().read_file("logs/ACARS.log"), logged);
}

std::string fault_session::fill_in_server(std::string line) const
{
    const std::size_t place = line.find("%s");
    if (place != std::string::npos)
        line.replace(place, 2, alias_of(1) + ":" + settings.servers[1].port);
    return line;
}

testing::AssertionResult fault_session::wait_for_hit()
{
    return client.terminal().wait_until([&] { return faults.hits() > 0; }, "a call has failed");
}

void fault_session::expect_nothing_else_harmed()
{
    faults.set({});
    ASSERT_NO_FATAL_FAILURE(transmit_from_first("AFTER"));
    EXPECT_EQ(unlink(client.home().path_of("ncursesclient.conf").c_str()), 0);
    client.quit();
    EXPECT_EQ(client.home().read_config(), config_text(settings));
    EXPECT_EQ(client.home().read_file("logs/ACARS.log"), logged);
    EXPECT_EQ(first->read_packet(), (server_packet{.kind = 2, .payload = "Good Bye"}));
}
