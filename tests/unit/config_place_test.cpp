// config_place_test.cpp - what may stand in the configuration file's place, and what is too large.
#include "unit/config_fixture.hpp"
#include "unit/unprivileged.hpp"

#include <string>

namespace
{

const std::string one_server =
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<clientconf version=\"1.02\">\n"
    "<Server1>\n<ServerName>a</ServerName><ServerPort>1</ServerPort></Server1>\n</clientconf>\n";

class config_place : public config_test
{
};

TEST_F(config_place, survives_a_folder_or_a_fifo_in_place_of_the_file)
{
    home.make_folder("ncursesclient.conf");
    config_load();
    EXPECT_EQ(app_state.servers->count, 0);
    ASSERT_EQ(rmdir(home.path_of("ncursesclient.conf").c_str()), 0);
    ASSERT_EQ(mkfifo(home.path_of("ncursesclient.conf").c_str(), 0600), 0);
    config_load();
    EXPECT_EQ(app_state.servers->count, 0);
    EXPECT_TRUE(is_in(elsewhere));
}

TEST_F(config_place, refuses_a_file_over_its_limit_with_one_red_line)
{
    constexpr off_t limit = 64L * 1024 * 1024;
    const std::string path = home.path_of("ncursesclient.conf");
    home.write_config(one_server);
    ASSERT_EQ(truncate(path.c_str(), limit + 1), 0);
    config_load();
    EXPECT_EQ(app_state.servers->count, 0);
    EXPECT_EQ(screen.pair_at(app_state.status_pane, 4, 1), 5);
    EXPECT_EQ(screen.status_text(1), "");
    EXPECT_TRUE(is_in(elsewhere));
    ASSERT_EQ(truncate(path.c_str(), limit), 0);
    config_load();
    ASSERT_EQ(app_state.servers->count, 1);
    EXPECT_STREQ(server_at(app_state.servers, 0)->ServerName, "a");
    EXPECT_EQ(screen.pair_at(app_state.status_pane, 4, 1), 7);
}

TEST_F(config_place, treats_an_unreadable_file_as_missing)
{
    home.write_config(one_server);
    ASSERT_TRUE(give_to_nobody(home.path().c_str()));
    ASSERT_TRUE(give_to_nobody(elsewhere.path().c_str()));
    ASSERT_EQ(chmod(home.path_of("ncursesclient.conf").c_str(), 0), 0);
    EXPECT_TRUE(unprivileged([this] {
        config_load();
        return app_state.servers->count == 0 && is_in(elsewhere) &&
               screen.status_text().starts_with("No configuration found in '");
    }));
}

} // namespace
