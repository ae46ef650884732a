// file_replace_test.cpp - the file is the whole old one or the whole new one, whatever goes wrong.
#include "base/file_replace.hpp"

#include "base/owners.hpp"
#include "support/temp_home.hpp"
#include "unit/unprivileged.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr const char* new_content = "the new content\n";
constexpr const char* old_content = "the old content, which is longer\n";

const std::string much(200'000, 'n');

struct stat read_status(const std::string& path)
{
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

mode_t read_mode(const std::string& path)
{
    return read_status(path).st_mode & 07777;
}

class file_replacing : public testing::Test
{
protected:
    bool replace(const char* name, std::string_view content = new_content) const
    {
        return file_replace(home.path_of(name).c_str(), content, file_readers::as_before);
    }
    void link_to(const std::string& target, const char* name) const
    {
        ASSERT_EQ(symlink(target.c_str(), home.path_of(name).c_str()), 0);
    }
    void set_mode(const char* name, mode_t mode) const
    {
        ASSERT_EQ(chmod(home.path_of(name).c_str(), mode), 0);
    }

    temp_home home;
};

TEST_F(file_replacing, makes_a_new_file_for_its_owner_only)
{
    EXPECT_TRUE(replace("file"));
    EXPECT_EQ(home.read_file("file"), new_content);
    EXPECT_EQ(read_mode(home.path_of("file")), 0600U);
    EXPECT_EQ(home.files(), std::vector<std::string>{"file"});
}

TEST_F(file_replacing, keeps_the_mode_whatever_the_umask)
{
    const mode_t umask_before = umask(077);
    for (const mode_t mode : {0600U, 0644U, 0666U, 0640U, 0200U}) {
        home.write_file("file", old_content);
        set_mode("file", mode);
        EXPECT_TRUE(replace("file"));
        EXPECT_EQ(read_mode(home.path_of("file")), mode);
        set_mode("file", 0600);
        EXPECT_EQ(home.read_file("file"), new_content);
    }
    umask(umask_before);
    EXPECT_EQ(home.files(), std::vector<std::string>{"file"});
}

TEST_F(file_replacing, accepts_a_bare_name_in_the_current_folder)
{
    EXPECT_TRUE(in_child([this] {
        return chdir(home.path().c_str()) == 0 &&
               file_replace("file", new_content, file_readers::as_before);
    }));
    EXPECT_EQ(home.read_file("file"), new_content);
}

TEST_F(file_replacing, leaves_the_old_file_to_those_who_are_reading_it)
{
    home.write_file("file", old_content);
    const unique_file reader(std::fopen(home.path_of("file").c_str(), "r"));
    ASSERT_TRUE(replace("file"));
    char line[100] = {};
    EXPECT_NE(std::fgets(line, sizeof line, reader.get()), nullptr);
    EXPECT_STREQ(line, old_content);
    EXPECT_EQ(home.read_file("file"), new_content);
}

TEST_F(file_replacing, follows_links_and_leaves_them)
{
    const struct {
        const char* behaviour;
        std::string target;
    } rows[] = {
        {"relative to the link", "real/file"},
        {"absolute", home.path_of("real/file")},
        {"by way of another link", "real/link"},
    };
    home.make_folder("real");
    link_to("file", "real/link");
    for (const auto& row : rows) {
        home.write_file("real/file", old_content);
        set_mode("real/file", 0640);
        link_to(row.target, "link");
        EXPECT_TRUE(replace("link")) << row.behaviour;
        EXPECT_TRUE(S_ISLNK(read_status(home.path_of("link")).st_mode)) << row.behaviour;
        EXPECT_TRUE(S_ISLNK(read_status(home.path_of("real/link")).st_mode)) << row.behaviour;
        EXPECT_TRUE(S_ISREG(read_status(home.path_of("real/file")).st_mode)) << row.behaviour;
        EXPECT_EQ(home.read_file("real/file"), new_content) << row.behaviour;
        EXPECT_EQ(read_mode(home.path_of("real/file")), 0640U) << row.behaviour;
        unlink(home.path_of("link").c_str());
    }
    EXPECT_EQ(home.files(), (std::vector<std::string>{"real/", "real/file", "real/link"}));
}

TEST_F(file_replacing, makes_the_file_that_a_dangling_link_names)
{
    link_to("missing", "link");
    EXPECT_TRUE(replace("link"));
    EXPECT_TRUE(S_ISLNK(read_status(home.path_of("link")).st_mode));
    EXPECT_EQ(home.read_file("missing"), new_content);
}

TEST_F(file_replacing, gives_up_on_links_in_a_circle)
{
    link_to("two", "one");
    link_to("one", "two");
    EXPECT_FALSE(replace("one"));
    for (const char* name : {"one", "two"})
        EXPECT_TRUE(S_ISLNK(read_status(home.path_of(name)).st_mode));
}

TEST_F(file_replacing, refuses_a_folder_and_a_missing_folder)
{
    home.make_folder("folder");
    EXPECT_FALSE(replace("folder"));
    EXPECT_FALSE(replace("missing/file"));
    EXPECT_EQ(home.files(), std::vector<std::string>{"folder/"});
}

TEST_F(file_replacing, writes_devices_in_place_and_tells_their_failures)
{
    link_to("/dev/null", "null");
    link_to("/dev/full", "full");
    EXPECT_TRUE(replace("null"));
    EXPECT_TRUE(S_ISCHR(read_status("/dev/null").st_mode));
    EXPECT_FALSE(replace("full"));
    EXPECT_TRUE(S_ISCHR(read_status("/dev/full").st_mode));
}

TEST_F(file_replacing, keeps_the_old_file_when_the_disk_is_full)
{
    home.write_file("file", old_content);
    EXPECT_TRUE(in_child([this] {
        const rlimit limit = {4096, 4096};
        std::signal(SIGXFSZ, SIG_IGN);
        return setrlimit(RLIMIT_FSIZE, &limit) == 0 && !replace("file", much);
    }));
    EXPECT_EQ(home.read_file("file"), old_content);
    EXPECT_EQ(home.files(), std::vector<std::string>{"file"});
}

class unprivileged_replacing : public file_replacing
{
protected:
    void SetUp() override
    {
        home.make_folder("folder");
        home.write_file("folder/file", old_content);
        for (const char* name : {"", "folder", "folder/file"})
            ASSERT_TRUE(give_to_nobody(home.path_of(name).c_str()));
    }
    void TearDown() override
    {
        set_mode("folder", 0700);
    }
};

TEST_F(unprivileged_replacing, leaves_a_file_alone_that_may_not_be_written)
{
    set_mode("folder/file", 0400);
    EXPECT_TRUE(unprivileged([this] { return !replace("folder/file"); }));
    EXPECT_EQ(home.read_file("folder/file"), old_content);
    EXPECT_EQ(read_mode(home.path_of("folder/file")), 0400U);
    EXPECT_EQ(home.files(), (std::vector<std::string>{"folder/", "folder/file"}));
}

TEST_F(unprivileged_replacing, writes_in_place_where_the_folder_takes_no_new_file)
{
    set_mode("folder", 0500);
    set_mode("folder/file", 0620);
    const ino_t inode = read_status(home.path_of("folder/file")).st_ino;
    EXPECT_TRUE(unprivileged([this] { return replace("folder/file"); }));
    EXPECT_EQ(home.read_file("folder/file"), new_content);
    EXPECT_EQ(read_mode(home.path_of("folder/file")), 0620U);
    EXPECT_EQ(read_status(home.path_of("folder/file")).st_ino, inode);
}

TEST_F(unprivileged_replacing, makes_no_new_file_where_the_folder_takes_none)
{
    set_mode("folder", 0500);
    EXPECT_TRUE(unprivileged([this] { return !replace("folder/new"); }));
    EXPECT_EQ(home.files(), (std::vector<std::string>{"folder/", "folder/file"}));
}

TEST_F(unprivileged_replacing, replaces_the_whole_file_where_the_folder_takes_new_files)
{
    const ino_t inode = read_status(home.path_of("folder/file")).st_ino;
    EXPECT_TRUE(unprivileged([this] { return replace("folder/file"); }));
    EXPECT_EQ(home.read_file("folder/file"), new_content);
    EXPECT_NE(read_status(home.path_of("folder/file")).st_ino, inode);
    EXPECT_EQ(home.files(), (std::vector<std::string>{"folder/", "folder/file"}));
}

} // namespace
