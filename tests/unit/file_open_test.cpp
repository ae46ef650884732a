// file_open_test.cpp - opening files under any name, without blocking.
#include "base/file_open.hpp"

#include "support/temp_home.hpp"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

class file_opening : public testing::Test
{
protected:
    unique_file open_as(file_use use) const
    {
        return file_open(home.path_of("file").c_str(), use);
    }
    /// The file's content after "new" was written to it in this mode.
    std::string after_writing(file_use use) const
    {
        const unique_file file = open_as(use);
        EXPECT_TRUE(file);
        if (file)
            std::fputs("new", file.get());
        return file && std::fflush(file.get()) == 0 ? home.read_file("file").value_or("missing")
                                                    : "not written";
    }

    temp_home home;
};

TEST_F(file_opening, creates_files_for_writing)
{
    for (const file_use use : {file_use::replacing, file_use::appending}) {
        const mode_t umask_before = umask(027);
        EXPECT_EQ(after_writing(use), "new");
        umask(umask_before);
        struct stat status = {};
        EXPECT_EQ(stat(home.path_of("file").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0640U);
        unlink(home.path_of("file").c_str());
    }
}

TEST_F(file_opening, truncates_or_appends)
{
    home.write_file("file", "old");
    EXPECT_EQ(after_writing(file_use::appending), "oldnew");
    EXPECT_EQ(after_writing(file_use::replacing), "new");
}

TEST_F(file_opening, reads_what_is_there)
{
    EXPECT_FALSE(open_as(file_use::reading));
    EXPECT_EQ(errno, ENOENT);
    home.write_file("file", "old");
    const unique_file file = open_as(file_use::reading);
    ASSERT_TRUE(file);
    char line[10] = {};
    EXPECT_NE(std::fgets(line, sizeof line, file.get()), nullptr);
    EXPECT_STREQ(line, "old");
}

TEST_F(file_opening, does_not_wait_for_the_other_end_of_a_fifo)
{
    ASSERT_EQ(mkfifo(home.path_of("file").c_str(), 0600), 0);
    EXPECT_FALSE(open_as(file_use::replacing));
    EXPECT_FALSE(open_as(file_use::appending));
    const unique_file file = open_as(file_use::reading);
    ASSERT_TRUE(file);
    EXPECT_EQ(std::fgetc(file.get()), EOF);
    EXPECT_EQ(std::feof(file.get()), 1);
}

TEST_F(file_opening, keeps_descriptors_from_other_programs)
{
    for (const file_use use : {file_use::appending, file_use::replacing, file_use::reading}) {
        const unique_file file = open_as(use);
        ASSERT_TRUE(file);
        EXPECT_NE(fcntl(fileno(file.get()), F_GETFD) & FD_CLOEXEC, 0);
    }
}

} // namespace
