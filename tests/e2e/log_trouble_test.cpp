// log_trouble_test.cpp - when a log or the configuration cannot be written, only what was to be
// written is lost.
#include "e2e/network_session.hpp"
#include "support/small_disk.hpp"

#include <algorithm>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

const std::string opened = "Logfile 'logs/ACARS.log' successfully opened";
const std::string unwritable = "Logfile 'logs/ACARS.log' cannot be written";

/// The reading end of a fifo; opening it does not block.
class fifo_reader
{
public:
    explicit fifo_reader(const std::string& path)
        : fd(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC))
    {
    }
    ~fifo_reader()
    {
        close(fd);
    }
    fifo_reader(const fifo_reader&) = delete;
    fifo_reader& operator=(const fifo_reader&) = delete;

    /// All that has been written to it so far.
    const std::string& text()
    {
        char bytes[4096];
        ssize_t length = 0;
        while ((length = read(fd, bytes, sizeof bytes)) > 0)
            all.append(bytes, static_cast<std::size_t>(length));
        return all;
    }

private:
    int fd;
    std::string all;
};

/// A client with one server that writes one log for all servers.
class log_trouble : public testing::Test
{
protected:
    void begin()
    {
        client_settings settings = servers.settings();
        settings.save_to_one = true;
        settings.log_folder = "logs";
        ASSERT_TRUE(client.start(settings, wide_terminal));
        connection = client.connect_selected(servers[0]);
        ASSERT_TRUE(connection);
        ASSERT_TRUE(client.wait_for_status(opened, pairs::notice));
    }

    /// Sends a transmission that must be shown, whether or not its record is written.
    testing::AssertionResult shown(const std::string& flight)
    {
        if (!connection->send(plain_packet(document_of({.flight = flight}))))
            return testing::AssertionFailure() << "the client takes no bytes";
        return wait_for_message_rows(client, lines_of({.flight = flight}));
    }

    /// How many lines of the status pane are `text`.
    auto lines_saying(const std::string& text)
    {
        const std::vector<std::string> lines = client.status_lines();
        return std::count(lines.begin(), lines.end(), text);
    }

    /// No file that the client writes may grow beyond `bytes` from now on.
    bool limit_file_size(rlim_t bytes)
    {
        const rlimit limit{.rlim_cur = bytes, .rlim_max = RLIM_INFINITY};
        return prlimit(client.terminal().process_id(), RLIMIT_FSIZE, &limit, nullptr) == 0;
    }

    listed_servers servers{1};
    client_session client;
    std::optional<server_connection> connection;
};

TEST_F(log_trouble, a_fifo_whose_reader_goes_away_loses_only_records)
{
    client.home().make_folder("logs");
    const std::string path = client.home().path_of("logs/ACARS.log");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    {
        fifo_reader reader(path);
        ASSERT_NO_FATAL_FAILURE(begin());
        ASSERT_TRUE(shown("READ"));
        ASSERT_TRUE(client.terminal().wait_until(
            [&] { return reader.text() == text_of({.flight = "READ"}); }, "the fifo's bytes"));
    }
    ASSERT_TRUE(shown("LOST1"));
    ASSERT_TRUE(client.wait_for_status(unwritable, pairs::error));
    ASSERT_TRUE(shown("LOST2"));
    ASSERT_TRUE(wait_for_notice(client, *connection, "still here"));
    EXPECT_EQ(lines_saying(unwritable), 1);
    fifo_reader later(path);
    ASSERT_TRUE(shown("AGAIN"));
    EXPECT_TRUE(client.terminal().wait_until(
        [&] { return later.text() == text_of({.flight = "AGAIN"}); }, "the later reader's bytes"));
    client.quit();
}

TEST_F(log_trouble, a_log_at_the_limit_for_file_sizes_loses_only_whole_records)
{
    client.home().make_folder("logs");
    ASSERT_NO_FATAL_FAILURE(begin());
    const std::string first = text_of({.flight = "FITS"});
    ASSERT_TRUE(shown("FITS"));
    ASSERT_TRUE(wait_for_file(client, "logs/ACARS.log", first));
    ASSERT_TRUE(limit_file_size(first.size() + 20));
    ASSERT_TRUE(shown("LOST1"));
    ASSERT_TRUE(client.wait_for_status(unwritable, pairs::error));
    ASSERT_TRUE(shown("LOST2"));
    ASSERT_TRUE(wait_for_notice(client, *connection, "still here"));
    EXPECT_EQ(client.home().read_file("logs/ACARS.log"), first);
    EXPECT_EQ(lines_saying(unwritable), 1);
    ASSERT_TRUE(limit_file_size(RLIM_INFINITY));
    ASSERT_TRUE(shown("AGAIN"));
    EXPECT_TRUE(wait_for_file(client, "logs/ACARS.log", first + text_of({.flight = "AGAIN"})));
    client.quit();
}

TEST_F(log_trouble, a_log_on_a_full_disk_continues_when_there_is_space_again)
{
    client.home().make_folder("logs");
    const small_disk disk(client.home().path_of("logs"), 64UL * 1024);
    if (!disk.is_there())
        GTEST_SKIP() << "nothing may be mounted here";
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_TRUE(disk.fill());
    // No record fits: the log has no page yet.
    ASSERT_TRUE(shown("LOST1"));
    ASSERT_TRUE(client.wait_for_status(unwritable, pairs::error));
    ASSERT_TRUE(shown("LOST2"));
    ASSERT_TRUE(wait_for_notice(client, *connection, "still here"));
    EXPECT_EQ(lines_saying(unwritable), 1);
    disk.empty();
    ASSERT_TRUE(shown("AGAIN"));
    EXPECT_TRUE(wait_for_file(client, "logs/ACARS.log", text_of({.flight = "AGAIN"})));
    client.quit();
}

TEST_F(log_trouble, a_log_that_was_deleted_is_made_anew)
{
    client.home().make_folder("logs");
    ASSERT_NO_FATAL_FAILURE(begin());
    ASSERT_TRUE(shown("BEFORE"));
    ASSERT_TRUE(wait_for_file(client, "logs/ACARS.log", text_of({.flight = "BEFORE"})));
    ASSERT_EQ(unlink(client.home().path_of("logs/ACARS.log").c_str()), 0);
    ASSERT_TRUE(shown("LOST"));
    ASSERT_TRUE(client.wait_for_status(unwritable, pairs::error));
    ASSERT_TRUE(shown("AGAIN"));
    ASSERT_TRUE(wait_for_last_status(client, opened));
    EXPECT_TRUE(wait_for_file(client, "logs/ACARS.log", text_of({.flight = "AGAIN"})));
    EXPECT_EQ(client.terminal().bells(), 0);
    client.quit();
}

TEST_F(log_trouble, a_configuration_beyond_the_limit_for_file_sizes_stays_as_it_was)
{
    client_settings settings = servers.settings();
    settings.save_on_exit = true;
    // A save that succeeded would drop the last line.
    const std::string before = config_text(settings) + "left alone\n";
    client.home().write_config(before);
    ASSERT_TRUE(client.start_as_it_is());
    ASSERT_TRUE(limit_file_size(100));
    client.quit();
    EXPECT_EQ(client.home().read_config(), before);
    EXPECT_EQ(client.home().files(), std::vector<std::string>{"ncursesclient.conf"});
}

} // namespace
