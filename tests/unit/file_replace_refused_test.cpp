// file_replace_refused_test.cpp - files that may not be replaced, in folders that take new files
// all the same.
#include "base/file_replace.hpp"

#include "support/temp_home.hpp"
#include "unit/unprivileged.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <vector>

namespace
{

constexpr const char* new_content = "the new content\n";
constexpr const char* old_content = "the old content, which is longer\n";

const std::string much(200'000, 'n');

/// A folder in which only its owner may replace a file, with a file of root's that all may write.
class sticky_folder : public testing::Test
{
protected:
    void SetUp() override
    {
        if (geteuid() != 0)
            GTEST_SKIP() << "only root can give a file to somebody else";
        home.make_folder("folder");
        home.write_file("folder/file", old_content);
        ASSERT_EQ(chmod(home.path().c_str(), 0755), 0);
        ASSERT_EQ(chmod(home.path_of("folder").c_str(), 01777), 0);
        ASSERT_EQ(chmod(path.c_str(), 0666), 0);
        before = status();
    }

    struct stat status() const
    {
        struct stat found = {};
        EXPECT_EQ(stat(path.c_str(), &found), 0);
        return found;
    }

    void expect_same_file_and_no_other() const
    {
        const struct stat after = status();
        EXPECT_EQ(after.st_ino, before.st_ino);
        EXPECT_EQ(after.st_uid, before.st_uid);
        EXPECT_EQ(after.st_mode, before.st_mode);
        EXPECT_EQ(home.files(), (std::vector<std::string>{"folder/", "folder/file"}));
    }

    temp_home home;
    std::string path = home.path_of("folder/file");
    struct stat before = {};
};

TEST_F(sticky_folder, has_its_file_written_in_place)
{
    EXPECT_TRUE(unprivileged(
        [this] { return file_replace(path.c_str(), new_content, file_readers::as_before); }));
    EXPECT_EQ(home.read_file("folder/file"), new_content);
    expect_same_file_and_no_other();
}

TEST_F(sticky_folder, keeps_the_old_content_when_the_disk_is_full)
{
    EXPECT_TRUE(unprivileged([this] {
        const rlimit limit = {4096, 4096};
        std::signal(SIGXFSZ, SIG_IGN);
        return setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
               !file_replace(path.c_str(), much, file_readers::as_before);
    }));
    EXPECT_EQ(home.read_file("folder/file"), old_content);
    expect_same_file_and_no_other();
}

TEST_F(sticky_folder, keeps_a_file_that_may_not_be_written)
{
    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    before = status();
    EXPECT_TRUE(unprivileged(
        [this] { return !file_replace(path.c_str(), new_content, file_readers::as_before); }));
    EXPECT_EQ(home.read_file("folder/file"), old_content);
    expect_same_file_and_no_other();
}

TEST(mounted_file, is_written_in_place)
{
    temp_home home;
    home.write_file("behind", old_content);
    home.write_file("file", "");
    const std::string behind = home.path_of("behind");
    const std::string path = home.path_of("file");
    const auto in_own_mounts = [&](const std::function<bool()>& piece) {
        return in_child([&] {
            return unshare(CLONE_NEWNS) == 0 &&
                   mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                   mount(behind.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) == 0 && piece();
        });
    };
    if (!in_own_mounts([] { return true; }))
        GTEST_SKIP() << "nothing may be mounted here";
    EXPECT_TRUE(in_own_mounts(
        [&] { return file_replace(path.c_str(), new_content, file_readers::as_before); }));
    EXPECT_EQ(home.read_file("behind"), new_content);
    EXPECT_EQ(home.read_file("file"), "");
    EXPECT_EQ(home.files(), (std::vector<std::string>{"behind", "file"}));
}

} // namespace
