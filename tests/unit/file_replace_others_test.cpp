// file_replace_others_test.cpp - replacing a file that is not one's own alone: its group, and other
// programs that replace it at the same time.
#include "base/file_replace.hpp"

#include "base/unfinished_file.hpp"
#include "support/temp_home.hpp"
#include "unit/unprivileged.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <grp.h>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace
{

/// Called after a new file was made and before anything is done with it; null: not at all.
std::function<void(const char* name)> on_new_file;

} // namespace

extern "C" {
int __real_mkostemp(char* path, int flags);
int __wrap_mkostemp(char* path, int flags);
}

int __wrap_mkostemp(char* path, int flags)
{
    const int fd = __real_mkostemp(path, flags);
    if (on_new_file)
        on_new_file(path);
    return fd;
}

namespace
{

constexpr const char* old_content = "the old content, which is longer\n";
constexpr gid_t shared_group = 4242;

TEST(replacing_for_a_group, leaves_the_file_to_its_group)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can give a file to somebody else";
    const temp_home home;
    home.write_file("file", old_content);
    const std::string path = home.path_of("file");
    ASSERT_TRUE(give_to_nobody(home.path().c_str()));
    ASSERT_EQ(chown(path.c_str(), 0, shared_group), 0);
    ASSERT_EQ(chmod(path.c_str(), 0664), 0);
    struct stat before = {};
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    EXPECT_TRUE(in_child([&] {
        return setgroups(1, &shared_group) == 0 && setgid(nobody_id) == 0 &&
               setuid(nobody_id) == 0 && file_replace(path.c_str(), "new", file_readers::as_before);
    }));
    struct stat after = {};
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_EQ(home.read_file("file"), "new");
    EXPECT_NE(after.st_ino, before.st_ino) << "it was replaced, not written in place";
    EXPECT_EQ(after.st_gid, shared_group);
    EXPECT_EQ(after.st_mode & 07777, 0664U);
}

class replacing_beside_others : public testing::Test
{
protected:
    ~replacing_beside_others() override
    {
        on_new_file = nullptr;
    }

    temp_home home;
    std::string path = home.path_of("file");
};

TEST_F(replacing_beside_others, survives_that_its_new_file_is_removed_as_a_leftover)
{
    home.write_file("file", old_content);
    int made = 0;
    // Between making a file and locking it, another program may take it for a leftover.
    on_new_file = [&](const char* name) {
        if (++made <= 2)
            unfinished_files_remove(path.c_str());
        EXPECT_EQ(access(name, F_OK) == 0, made > 2);
    };
    EXPECT_TRUE(file_replace(path.c_str(), "new", file_readers::as_before));
    EXPECT_EQ(made, 3);
    EXPECT_EQ(home.read_file("file"), "new");
    EXPECT_EQ(home.files(), std::vector<std::string>{"file"});
}

TEST_F(replacing_beside_others, leaves_them_what_they_are_writing)
{
    home.write_file("file", old_content);
    // The other program begins and ends while this one is about to write.
    on_new_file = [&](const char*) {
        on_new_file = nullptr;
        const unfinished_file theirs = unfinished_file_new(path.c_str());
        ASSERT_TRUE(theirs.fd);
        EXPECT_TRUE(file_replace(path.c_str(), "another's", file_readers::as_before));
        EXPECT_EQ(access(theirs.name.get(), F_OK), 0);
        unlink(theirs.name.get());
    };
    EXPECT_TRUE(file_replace(path.c_str(), "new", file_readers::as_before));
    EXPECT_EQ(home.read_file("file"), "new");
    EXPECT_EQ(home.files(), std::vector<std::string>{"file"});
}

TEST_F(replacing_beside_others, leaves_one_whole_file_of_several_programs)
{
    constexpr int programs = 4;
    constexpr int times = 25;
    std::vector<std::string> contents;
    for (int number = 0; number < programs; ++number)
        contents.emplace_back(20'000, static_cast<char>('a' + number));
    home.write_file("file", contents.front());
    EXPECT_TRUE(in_child([&] {
        std::vector<pid_t> children;
        for (const std::string& content : contents) {
            children.push_back(fork());
            if (children.back() != 0)
                continue;
            bool are_replaced = true;
            for (int time = 0; time < times; ++time)
                are_replaced &= file_replace(path.c_str(), content, file_readers::as_before);
            _exit(are_replaced ? EXIT_SUCCESS : EXIT_FAILURE);
        }
        bool is_whole = true;
        for (const pid_t child : children) {
            int status = -1;
            is_whole &= waitpid(child, &status, 0) == child && status == EXIT_SUCCESS;
            is_whole &= std::ranges::find(contents, home.read_file("file")) != contents.end();
        }
        return is_whole;
    }));
    EXPECT_EQ(home.files(), std::vector<std::string>{"file"});
}

} // namespace
