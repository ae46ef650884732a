// installation_test.cpp - the installed texts name the folders of their installation, and
// ncursesclient-setup gives them to a user who has none.
#include "support/command_lines.hpp"
#include "support/temp_home.hpp"
#include "unit/document_text.hpp"

#include <cstdlib>
#include <filesystem>
#include <sys/wait.h>

namespace
{

namespace files = std::filesystem;

constexpr const char* help_file = "ncursesclient.hlp";
constexpr const char* config_file = "ncursesclient.conf";

/// The texts, installed below a prefix of their own, and a home without any.
class installed_texts : public testing::Test
{
protected:
    void SetUp() override
    {
        command_lines("'" CMAKE_PROGRAM "' --install '" BUILD_FOLDER
                      "' --component texts --prefix '" +
                      prefix.path() + "'");
        home.make_folder("user");
    }

    /// Runs ncursesclient-setup in the empty home. variables: of its environment, for env(1).
    /// Returns its exit status; what it says goes to `said`.
    int run_setup(const std::string& arguments = "", const std::string& variables = "")
    {
        const std::string environment = variables.empty() ? "HOME='" + user() + "'" : variables;
        const std::string command = "cd '" + user() + "' && env " + environment + " '" +
                                    prefix.path_of("bin/ncursesclient-setup") + "' " + arguments +
                                    " >'" + home.path_of("said") + "' 2>&1";
        const int status = std::system(command.c_str());
        said = home.read_file("said").value_or("");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string user() const
    {
        return home.path_of("user");
    }
    std::string user_file(const std::string& name) const
    {
        return home.read_file("user/" + name).value_or("none");
    }

    /// Nothing is in the home but these files, which hold what the program comes with.
    void expect_copies()
    {
        EXPECT_EQ(user_file(help_file), source_text("share/ncursesclient.hlp"));
        EXPECT_EQ(user_file(config_file), source_text("share/ncursesclient.conf.example"));
        EXPECT_EQ(home.files(),
                  (std::vector<std::string>{"said", "user/", "user/ncursesclient.conf",
                                            "user/ncursesclient.hlp"}));
    }

    temp_home prefix;
    temp_home home;
    std::string said;
};

TEST_F(installed_texts, name_the_folders_of_their_installation)
{
    std::size_t places = 0;
    for (const std::string& name : prefix.files()) {
        if (name.ends_with('/'))
            continue;
        const std::string text = prefix.read_file(name).value_or("");
        EXPECT_EQ(text.find("/usr/local"), std::string::npos) << name;
        if (text.find(prefix.path_of("share/ncursesclient")) != std::string::npos)
            ++places;
    }
    EXPECT_EQ(places, 4U) << "three manual pages and a script name the folder";
}

TEST_F(installed_texts, are_copied_to_a_home_that_has_none)
{
    EXPECT_EQ(run_setup(), 0) << said;
    expect_copies();
    for (const char* name : {help_file, config_file}) {
        EXPECT_NE(said.find("Copied: " + user() + '/' + name + '\n'), std::string::npos) << said;
        EXPECT_EQ(files::status(user() + '/' + name).permissions(),
                  files::perms::owner_read | files::perms::owner_write);
    }
    EXPECT_NE(said.find("edit this file:\n  " + user() + "/ncursesclient.conf\n"),
              std::string::npos)
        << said;
    for (const char* word : {"ServerName", "ServerPort", "ServerAlias", "<Server2>", "tovriksim"})
        EXPECT_NE(said.find(word), std::string::npos) << said;
}

TEST_F(installed_texts, go_to_the_current_folder_without_a_home)
{
    EXPECT_EQ(run_setup("", "-u HOME"), 0) << said;
    expect_copies();
}

TEST_F(installed_texts, are_never_copied_over_what_is_there)
{
    home.write_file("user/ncursesclient.conf", "mine");
    files::create_symlink("nowhere", user() + "/ncursesclient.hlp");
    EXPECT_EQ(run_setup(), 0) << said;
    EXPECT_EQ(user_file(config_file), "mine");
    EXPECT_EQ(files::read_symlink(user() + "/ncursesclient.hlp"), "nowhere");
    EXPECT_FALSE(files::exists(user() + "/nowhere"));
    EXPECT_NE(said.find("There already, and left as it is: " + user() + "/ncursesclient.conf"),
              std::string::npos)
        << said;
    EXPECT_EQ(said.find("Copied"), std::string::npos) << said;
}

TEST_F(installed_texts, are_never_copied_over_what_appears_meanwhile)
{
    // This cat makes the user's file when the script has found that there is none.
    home.make_folder("early");
    home.write_file("early/cat", "#!/bin/sh\ncase $1 in *.conf.example) echo mine >'" + user() +
                                     "/ncursesclient.conf' ;; esac\nexec /bin/cat \"$@\"\n");
    files::permissions(home.path_of("early/cat"), files::perms::owner_all);
    EXPECT_EQ(run_setup("", "HOME='" + user() + "' PATH='" + home.path_of("early") + "':$PATH"), 0)
        << said;
    EXPECT_NE(said.find("made by another program"), std::string::npos) << said;
    EXPECT_EQ(user_file(config_file), "mine\n");
    EXPECT_EQ(user_file(help_file), source_text("share/ncursesclient.hlp"));
}

TEST_F(installed_texts, that_cannot_be_copied_are_complained_of)
{
    EXPECT_EQ(run_setup("", "HOME=/proc"), 1);
    EXPECT_NE(said.find("ncursesclient-setup: cannot write to /proc"), std::string::npos) << said;
    EXPECT_EQ(run_setup("", "HOME='" + user() + "/nowhere'"), 1);
    EXPECT_NE(said.find("/nowhere' is not there"), std::string::npos) << said;
    EXPECT_EQ(run_setup("", "HOME="), 1);
    files::remove(prefix.path_of("share/ncursesclient/ncursesclient.hlp"));
    EXPECT_EQ(run_setup(), 1);
    EXPECT_NE(said.find("cannot read " + prefix.path()), std::string::npos) << said;
    EXPECT_TRUE(files::is_empty(user()));
}

TEST_F(installed_texts, are_not_copied_by_other_arguments)
{
    for (const char* help : {"-h", "--help"}) {
        EXPECT_EQ(run_setup(help), 0);
        EXPECT_TRUE(said.starts_with("Usage: ncursesclient-setup\n")) << said;
    }
    for (const char* wrong : {"--force", "one two", "''", "--help --help"}) {
        EXPECT_EQ(run_setup(wrong), 2) << wrong;
        EXPECT_TRUE(said.starts_with("Usage: ncursesclient-setup\n")) << said;
    }
    EXPECT_TRUE(files::is_empty(user()));
}

} // namespace
