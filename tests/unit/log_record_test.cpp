// log_record_test.cpp - a log holds whole records only.
#include "base/log_record.hpp"

#include "base/owners.hpp"
#include "support/small_disk.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

/// A log in memory.
class log_record : public testing::Test
{
protected:
    log_record() : log(memfd_create("log", MFD_CLOEXEC | MFD_ALLOW_SEALING))
    {
        EXPECT_EQ(fcntl(log.get(), F_SETFL, O_APPEND), 0);
    }

    bool append(std::string_view record)
    {
        return record_append(log.get(), record, torn);
    }
    /// The same while the log may not grow beyond a size.
    bool append_within(rlim_t bytes, std::string_view record)
    {
        const file_size_limit limit(bytes);
        return append(record);
    }
    /// From now on nothing can be cut from the log.
    void forbid_truncation() const
    {
        ASSERT_EQ(fcntl(log.get(), F_ADD_SEALS, F_SEAL_SHRINK), 0);
    }
    std::string text() const
    {
        std::string bytes(1000, '\0');
        const ssize_t length = pread(log.get(), bytes.data(), bytes.size(), 0);
        bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
        return bytes;
    }

    unique_fd log;
    torn_record torn = {};
};

TEST_F(log_record, is_appended)
{
    EXPECT_TRUE(append("\none"));
    EXPECT_TRUE(append(""));
    EXPECT_TRUE(append("\ntwo"));
    EXPECT_EQ(text(), "\none\ntwo");
}

TEST_F(log_record, is_taken_back_if_only_a_part_fits)
{
    EXPECT_TRUE(append("\none"));
    for (rlim_t room = 0; room < 6; ++room) {
        EXPECT_FALSE(append_within(4 + room, "\nthree"));
        EXPECT_EQ(text(), "\none") << room;
        EXPECT_EQ(torn.bytes, 0U) << room;
    }
    EXPECT_TRUE(append_within(10, "\nthree"));
    EXPECT_EQ(text(), "\none\nthree");
}

TEST_F(log_record, gets_nothing_after_it_if_it_cannot_be_taken_back)
{
    EXPECT_TRUE(append("\none"));
    forbid_truncation();
    EXPECT_FALSE(append_within(6, "\ntwo"));
    EXPECT_EQ(text(), "\none\nt");
    EXPECT_FALSE(append("\nthree"));
    EXPECT_EQ(text(), "\none\nt");
}

TEST_F(log_record, is_taken_back_before_the_next_one_if_that_failed_before)
{
    EXPECT_TRUE(append("\none\ntw"));
    torn = {.begin = 4, .bytes = 3};
    EXPECT_TRUE(append("\nthree"));
    EXPECT_EQ(text(), "\none\nthree");
    EXPECT_TRUE(append("\nfour"));
    EXPECT_EQ(text(), "\none\nthree\nfour");
}

TEST_F(log_record, is_left_alone_in_a_log_that_others_have_changed_meanwhile)
{
    EXPECT_TRUE(append("\nothers"));
    for (const torn_record before : {torn_record{2, 3}, torn_record{5, 20}}) {
        torn = before;
        EXPECT_TRUE(undo_torn_record(log.get(), torn));
        EXPECT_EQ(torn.bytes, 0U);
        EXPECT_EQ(text(), "\nothers");
    }
}

TEST(log_record_in_a_pipe, is_written_or_not_and_breaks_nothing)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    const unique_fd reader(ends[0]);
    const unique_fd writer(ends[1]);
    torn_record torn = {};
    ASSERT_TRUE(record_append(writer.get(), "\none", torn));
    const std::string too_long(1'000'000, 'x');
    EXPECT_FALSE(record_append(writer.get(), too_long, torn));
    EXPECT_EQ(torn.bytes, 0U);
    char bytes[4];
    EXPECT_EQ(read(reader.get(), bytes, sizeof bytes), 4);
    EXPECT_EQ(std::string(bytes, 4), "\none");
}

TEST(log_record_on_a_device, is_not_written_if_the_device_is_full)
{
    const unique_fd device(open("/dev/full", O_WRONLY | O_APPEND | O_CLOEXEC));
    torn_record torn = {};
    EXPECT_FALSE(record_append(device.get(), "\none", torn));
    EXPECT_FALSE(is_deleted(device.get()));
}

TEST(log_that_is_deleted, is_noticed)
{
    std::string path = testing::TempDir() + "log-XXXXXX";
    const unique_fd log(mkstemp(path.data()));
    ASSERT_TRUE(log);
    EXPECT_FALSE(is_deleted(log.get()));
    ASSERT_EQ(rename(path.c_str(), (path + ".1").c_str()), 0);
    EXPECT_FALSE(is_deleted(log.get()));
    ASSERT_EQ(unlink((path + ".1").c_str()), 0);
    EXPECT_TRUE(is_deleted(log.get()));
}

} // namespace
