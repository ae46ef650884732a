// unfinished_file_test.cpp - what a killed program leaves is removed, and nothing else.
#include "base/unfinished_file.hpp"

#include "support/temp_home.hpp"
#include "unit/unprivileged.hpp"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace
{

class unfinished_files : public testing::Test
{
protected:
    void remove() const
    {
        unfinished_files_remove(path.c_str());
    }

    temp_home home;
    std::string path = home.path_of("file");
};

TEST_F(unfinished_files, are_new_private_and_in_the_same_folder)
{
    const unfinished_file one = unfinished_file_new(path.c_str());
    const unfinished_file two = unfinished_file_new(path.c_str());
    ASSERT_TRUE(one.fd && two.fd);
    EXPECT_STRNE(one.name.get(), two.name.get());
    EXPECT_TRUE(std::string(one.name.get()).starts_with(path + ".unfinished-"));
    struct stat status = {};
    ASSERT_EQ(stat(one.name.get(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
    EXPECT_EQ(status.st_size, 0);
}

TEST_F(unfinished_files, cannot_be_made_in_a_folder_that_is_not_there)
{
    const unfinished_file none = unfinished_file_new(home.path_of("missing/file").c_str());
    EXPECT_FALSE(none.fd);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(unfinished_files, stay_while_they_are_being_written)
{
    const unfinished_file mine = unfinished_file_new(path.c_str());
    remove();
    EXPECT_TRUE(std::filesystem::exists(mine.name.get()));
    EXPECT_TRUE(in_child([this] {
        remove();
        return true;
    }));
    EXPECT_TRUE(std::filesystem::exists(mine.name.get()));
}

TEST_F(unfinished_files, are_removed_when_nobody_writes_them_any_more)
{
    for (int number = 0; number < 3; ++number)
        ASSERT_TRUE(unfinished_file_new(path.c_str()).fd);
    ASSERT_TRUE(in_child([this] {
        static_cast<void>(unfinished_file_new(path.c_str()).fd.release());
        return true;
    }));
    EXPECT_EQ(home.files().size(), 4U);
    remove();
    EXPECT_EQ(home.files(), std::vector<std::string>{});
}

TEST_F(unfinished_files, are_recognised_by_their_whole_name)
{
    const std::vector<std::string> others = {
        "file",
        "file.backup",
        "file.unfinished",
        "file.unfinished-",
        "file.unfinished-12.456",
        "file.unfinished-12345",
        "file.unfinished-1234567",
        "file2.unfinished-123456",
        "other.unfinished-123456",
    };
    for (const std::string& name : others)
        home.write_file(name, "kept");
    home.write_file("file.unfinished-aB3456", "left behind");
    remove();
    EXPECT_EQ(home.files(), others);
}

TEST_F(unfinished_files, belong_to_this_user)
{
    home.make_folder("file.unfinished-folder");
    std::filesystem::create_symlink("kept", home.path_of("file.unfinished-linked"));
    ASSERT_EQ(mkfifo(home.path_of("file.unfinished-fifo01").c_str(), 0600), 0);
    home.write_file("kept", "kept");
    std::vector<std::string> names = {"file.unfinished-fifo01", "file.unfinished-folder/",
                                      "file.unfinished-linked", "kept"};
    if (geteuid() == 0) {
        home.write_file("file.unfinished-theirs", "somebody else's");
        ASSERT_TRUE(give_to_nobody(home.path_of("file.unfinished-theirs").c_str()));
        names.insert(names.begin() + 3, "file.unfinished-theirs");
    }
    remove();
    EXPECT_EQ(home.files(), names);
}

TEST_F(unfinished_files, are_found_in_the_working_folder)
{
    home.write_file("file.unfinished-123456", "left behind");
    EXPECT_TRUE(in_child([this] {
        unfinished_files_remove("file");
        return chdir(home.path().c_str()) == 0;
    }));
    EXPECT_EQ(home.files().size(), 1U);
    EXPECT_TRUE(in_child([this] {
        const bool is_there = chdir(home.path().c_str()) == 0;
        unfinished_files_remove("file");
        return is_there;
    }));
    EXPECT_EQ(home.files(), std::vector<std::string>{});
}

} // namespace
