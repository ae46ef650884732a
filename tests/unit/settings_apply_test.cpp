// settings_apply_test.cpp - applying changed log and uplink switches.
#include "app/settings_toggle.hpp"
#include "unit/net_fixture.hpp"

#include "support/temp_home.hpp"

#include <fcntl.h>
#include <unistd.h>

namespace
{

class settings_apply : public net_test
{
protected:
    settings_apply()
        : entry(add_server("host.example", "srv")), idle_entry(add_server("idle.example", "idle")),
          server(connect(entry))
    {
        EXPECT_EQ(chdir(folder.path().c_str()), 0);
        folder.make_folder("srv");
        folder.make_folder("idle");
        app_state.setting_texts[LogFilePath] = owned_text(".");
    }
    ~settings_apply() override
    {
        EXPECT_EQ(fchdir(former_folder.get()), 0);
    }
    settings_apply(const settings_apply&) = delete;
    settings_apply& operator=(const settings_apply&) = delete;

    temp_home folder;
    server_entry& entry;
    server_entry& idle_entry;
    server_end server;

private:
    unique_fd former_folder{open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)};
};

const wire_packet uplinks_wanted = {95, "0"};
const wire_packet uplinks_unwanted = {95, "1"};

TEST_F(settings_apply, tells_connected_servers_whether_uplinks_are_wanted)
{
    apply_log_settings();
    EXPECT_EQ(server.take_bytes(), wire_bytes(uplinks_wanted));
    app_state.setting_flags = NoUplinks;
    apply_log_settings();
    EXPECT_EQ(server.take_packets(), (wire_packets{uplinks_unwanted}));
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(idle_entry.socket_fd, 0);
}

TEST_F(settings_apply, tells_every_server)
{
    const server_end other = connect(idle_entry);
    apply_log_settings();
    EXPECT_EQ(server.take_packets(), (wire_packets{uplinks_wanted}));
    EXPECT_EQ(other.take_packets(), (wire_packets{uplinks_wanted}));
}

TEST_F(settings_apply, uses_the_socket_even_while_a_connect_is_pending)
{
    entry.connected = 0;
    app_state.setting_flags = ACARSLog;
    apply_log_settings();
    EXPECT_EQ(server.take_packets(), (wire_packets{uplinks_wanted}));
    EXPECT_NE(entry.log_file, nullptr);
}

TEST_F(settings_apply, opens_logs_of_connected_servers_only)
{
    app_state.setting_flags = ACARSLog;
    apply_log_settings();
    EXPECT_NE(entry.log_file, nullptr);
    EXPECT_EQ(idle_entry.log_file, nullptr);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'srv/..log' successfully opened", 6}}));
    apply_log_settings();
    EXPECT_EQ(said().size(), 1U);
}

TEST_F(settings_apply, closes_logs_of_connected_servers_only)
{
    app_state.setting_flags = ACARSLog;
    const server_end other = connect(idle_entry);
    apply_log_settings();
    ASSERT_NE(idle_entry.log_file, nullptr);
    close(idle_entry.socket_fd);
    idle_entry.socket_fd = 0;
    app_state.setting_flags = 0;
    apply_log_settings();
    EXPECT_EQ(entry.log_file, nullptr);
    EXPECT_NE(idle_entry.log_file, nullptr);
}

TEST_F(settings_apply, lets_the_shared_log_replace_the_servers_own)
{
    app_state.setting_flags = ACARSLog;
    apply_log_settings();
    mark();
    app_state.setting_flags = ACARSLog | SaveToOne | ContactInfo;
    apply_log_settings();
    EXPECT_EQ(app_state.setting_flags, static_cast<std::uint32_t>(SaveToOne | ContactInfo));
    EXPECT_EQ(entry.log_file, nullptr);
    // The next connect opens the shared log itself.
    EXPECT_EQ(app_state.shared_log, nullptr);
    EXPECT_EQ(said(), status_lines{});
    EXPECT_FALSE(folder.read_file("ACARS.log").has_value());
}

TEST_F(settings_apply, keeps_the_shared_log_open_while_it_is_wanted)
{
    app_state.shared_log = std::fopen("ACARS.log", "at");
    app_state.setting_flags = SaveToOne;
    apply_log_settings();
    EXPECT_NE(app_state.shared_log, nullptr);
    app_state.setting_flags = ACARSLog;
    apply_log_settings();
    EXPECT_EQ(app_state.shared_log, nullptr);
    EXPECT_NE(entry.log_file, nullptr);
    EXPECT_EQ(app_state.setting_flags, static_cast<std::uint32_t>(ACARSLog));
}

TEST_F(settings_apply, does_nothing_without_servers_that_are_connected)
{
    close(entry.socket_fd);
    entry.socket_fd = 0;
    app_state.setting_flags = ACARSLog | NoUplinks;
    apply_log_settings();
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(folder.files(), (std::vector<std::string>{"idle/", "srv/"}));
}

} // namespace
