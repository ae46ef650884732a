// log_trouble_test.cpp - logs that can no longer be written are reported once and retried.
#include "unit/log_fixture.hpp"

#include "support/small_disk.hpp"
#include "unit/own_faults.hpp"

#include <cerrno>
#include <filesystem>
#include <optional>

namespace
{

const status_line opened{"Logfile 'srv/logs.log' successfully opened", 6};
const status_line unwritable{"Logfile 'srv/logs.log' cannot be written", 5};

/// A server whose log is open and holds one record.
class log_trouble : public log_test
{
protected:
    log_trouble()
    {
        folder.make_folder("srv");
        set_log_folder("logs");
    }

    void begin()
    {
        open_log_files(entry);
        ASSERT_NE(entry.log_file, nullptr);
        log("\none");
        mark();
    }
    void log(const char* record) const
    {
        log_transmission(entry, record);
    }
    std::optional<std::string> text() const
    {
        return folder.read_file("srv/logs.log");
    }
};

TEST_F(log_trouble, is_reported_once_and_leaves_no_partial_record)
{
    begin();
    for (int round = 0; round < 2; ++round) {
        {
            const file_size_limit limit(text()->size() + 2);
            log("\nlost");
            log("\nlost too");
        }
        EXPECT_EQ(said(), status_lines{unwritable});
        log("\ntwo");
        log("\nthree");
        EXPECT_EQ(said(), status_lines{unwritable});
        mark();
    }
    EXPECT_EQ(text(), "\none\ntwo\nthree\ntwo\nthree");
}

TEST_F(log_trouble, ends_when_a_full_disk_has_space_again)
{
    const small_disk disk(folder.path_of("srv"), 64UL * 1024);
    if (!disk.is_there())
        GTEST_SKIP() << "nothing may be mounted here";
    begin();
    std::string whole = *text();
    ASSERT_TRUE(disk.fill());
    // The log's page takes some more records, until one fits only in part.
    const std::string record = '\n' + std::string(300, 'r');
    while (said().empty()) {
        log(record.c_str());
        if (said().empty())
            whole += record;
    }
    EXPECT_EQ(said(), status_lines{unwritable});
    EXPECT_EQ(text(), whole);
    disk.empty();
    log(record.c_str());
    EXPECT_EQ(text(), whole + record);
    EXPECT_EQ(said(), status_lines{unwritable});
    close_log_file(entry);
}

TEST_F(log_trouble, ends_with_a_new_file_after_a_deletion)
{
    begin();
    ASSERT_EQ(unlink("srv/logs.log"), 0);
    log("\nlost");
    EXPECT_EQ(said(), status_lines{unwritable});
    EXPECT_EQ(entry.log_file, nullptr);
    log("\ntwo");
    log("\nthree");
    EXPECT_EQ(said(), (status_lines{unwritable, opened}));
    EXPECT_EQ(text(), "\ntwo\nthree");
    ASSERT_EQ(unlink("srv/logs.log"), 0);
    log("\nlost");
    EXPECT_EQ(said(), (status_lines{unwritable, opened, unwritable}));
}

TEST_F(log_trouble, is_reported_once_for_a_deleted_folder_until_it_is_back)
{
    begin();
    std::filesystem::remove_all("srv");
    for (int round = 0; round < 3; ++round)
        log("\nlost");
    EXPECT_EQ(said(), status_lines{unwritable});
    folder.make_folder("srv");
    log("\ntwo");
    EXPECT_EQ(said(), (status_lines{unwritable, opened}));
    EXPECT_EQ(text(), "\ntwo");
}

TEST_F(log_trouble, ends_for_the_shared_log_with_the_next_transmission_of_any_server)
{
    app_state.setting_flags = SaveToOne;
    set_log_folder("srv");
    open_log_files(entry);
    log("\none");
    mark();
    ASSERT_EQ(unlink("srv/ACARS.log"), 0);
    log("\nlost");
    log_transmission(add_server("other.example"), "\ntwo");
    EXPECT_EQ(said(), (status_lines{{"Logfile 'srv/ACARS.log' cannot be written", 5},
                                    {"Logfile 'srv/ACARS.log' successfully opened", 6}}));
    EXPECT_EQ(folder.read_file("srv/ACARS.log"), "\ntwo");
}

TEST_F(log_trouble, does_not_arise_when_a_log_is_copied_and_truncated)
{
    begin();
    std::filesystem::copy("srv/logs.log", "srv/logs.log.1");
    ASSERT_EQ(truncate("srv/logs.log", 0), 0);
    log("\ntwo");
    EXPECT_EQ(text(), "\ntwo");
    EXPECT_EQ(said(), status_lines{});
}

TEST_F(log_trouble, does_not_arise_when_a_log_is_renamed)
{
    begin();
    std::filesystem::rename("srv/logs.log", "srv/logs.log.1");
    log("\ntwo");
    EXPECT_EQ(folder.read_file("srv/logs.log.1"), "\none\ntwo");
    EXPECT_EQ(said(), status_lines{});
}

TEST_F(log_trouble, is_reported_once_for_a_device)
{
    std::filesystem::create_symlink("/dev/full", "srv/logs.log");
    open_log_files(entry);
    log("\nlost");
    log("\nlost");
    EXPECT_EQ(said(), (status_lines{opened, unwritable}));
    EXPECT_NE(entry.log_file, nullptr);
}

TEST_F(log_trouble, ends_with_the_log_if_it_left_a_partial_record)
{
    begin();
    {
        const file_size_limit limit(text()->size() + 2);
        const own_fault kept({faulty_call::set_length, EIO});
        log("\nlost");
        EXPECT_EQ(text(), "\none\nl");
    }
    close_log_file(entry);
    EXPECT_EQ(text(), "\none");
}

TEST_F(log_trouble, with_a_partial_record_does_not_spread_to_the_file_that_follows)
{
    begin();
    {
        const file_size_limit limit(text()->size() + 2);
        const own_fault kept({faulty_call::set_length, EIO, "", 0, every_call});
        log("\nlost");
        ASSERT_EQ(text(), "\none\nl");
        ASSERT_EQ(unlink("srv/logs.log"), 0);
        log("\nlost too");
    }
    // As long as the file that was deleted, and somebody else's.
    folder.write_file("srv/logs.log", "\nfive.");
    log("\ntwo");
    EXPECT_EQ(text(), "\nfive.\ntwo");
}

TEST_F(log_trouble, is_forgotten_when_the_user_closes_the_log)
{
    begin();
    ASSERT_EQ(unlink("srv/logs.log"), 0);
    log("\nlost");
    close_log_file(entry);
    mark();
    log("\nnot logged");
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(text(), std::nullopt);
    open_log_files(entry);
    EXPECT_EQ(said(), status_lines{opened});
}

TEST_F(log_trouble, brings_back_only_the_log_that_the_settings_ask_for)
{
    begin();
    ASSERT_EQ(unlink("srv/logs.log"), 0);
    log("\nlost");
    mark();
    for (const std::uint32_t flags : {0U, static_cast<std::uint32_t>(SaveToOne)}) {
        app_state.setting_flags = flags;
        log("\nnot logged");
    }
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(folder.files(), std::vector<std::string>{"srv/"});
}

TEST_F(log_trouble, is_not_retried_if_opening_failed)
{
    std::filesystem::remove_all("srv");
    open_log_files(entry);
    folder.make_folder("srv");
    log("\nnot logged");
    EXPECT_EQ(said(), (status_lines{{"Logfile 'srv/logs.log' not opened", 6}}));
    EXPECT_EQ(text(), std::nullopt);
}

} // namespace
