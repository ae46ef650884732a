// tovrikd_unit_test.cpp - the installed unit of tovrikd, as systemd's own checker sees it.
#include "support/command_lines.hpp"
#include "support/temp_home.hpp"
#include "unit/document_text.hpp"

#include <cstdlib>
#include <filesystem>
#include <sys/wait.h>

namespace
{

/// The unit, installed below a prefix of its own with the program that it starts.
class tovrikd_unit : public testing::Test
{
protected:
    void SetUp() override
    {
        command_lines("'" CMAKE_PROGRAM "' --install '" BUILD_FOLDER
                      "' --component texts --prefix '" +
                      prefix.path() + "'");
        std::filesystem::create_directories(prefix.path_of("bin"));
        std::filesystem::create_symlink(TOVRIKD_BINARY, prefix.path_of("bin/tovrikd"));
    }

    /// Runs systemd-analyze on the unit. Returns its exit status; what it says goes to `said`.
    int analyse(const std::string& arguments)
    {
        const int status = std::system(("systemd-analyze " + arguments + " '" + path + "' >'" +
                                        prefix.path_of("said") + "' 2>&1")
                                           .c_str());
        said = prefix.read_file("said").value_or("");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    static bool has_checker()
    {
        return std::system("command -v systemd-analyze >/dev/null") == 0;
    }

    temp_home prefix;
    std::string path = prefix.path_of("lib/systemd/system/tovrikd.service");
    std::string said;
};

TEST_F(tovrikd_unit, has_no_mistake)
{
    if (!has_checker())
        GTEST_SKIP() << "there is no systemd-analyze";
    EXPECT_EQ(analyse("verify --man=no --recursive-errors=no"), 0);
    EXPECT_EQ(said, "");
}

TEST_F(tovrikd_unit, is_exposed_by_at_most_2)
{
    if (!has_checker())
        GTEST_SKIP() << "there is no systemd-analyze";
    EXPECT_EQ(analyse("security --offline=true --no-pager --threshold=20"), 0) << said;
    EXPECT_NE(said.find("Overall exposure level for tovrikd.service: "), std::string::npos) << said;
}

TEST_F(tovrikd_unit, names_manual_pages_that_are_installed)
{
    const auto pages =
        all_matches(source_text("share/systemd/tovrikd.service"), R"(man:([a-z.]+)\(([0-9])\))");
    EXPECT_EQ(pages.size(), 2U);
    for (const auto& page : pages) {
        const std::string file = "share/man/man" + page[1] + "/" + page[0] + "." + page[1];
        EXPECT_TRUE(prefix.read_file(file)) << file;
    }
}

TEST_F(tovrikd_unit, gives_the_files_with_passwords_to_its_user_before_they_are_read)
{
    const std::string unit = source_text("share/systemd/tovrikd.service");
    EXPECT_EQ(all_matches(unit, "\nExec(StartPre|Reload)=[+]-/bin/chown -f --reference=%S/tovrikd"
                                " %E/tovrikd/passwords %E/tovrikd/mqtt-password")
                  .size(),
              2U);
    EXPECT_LT(unit.find("ExecReload=+"), unit.find("ExecReload=/bin/kill"));
    const std::string example = source_text("share/tovrikd.toml.example");
    for (const char* key : {"passwords_file = \"passwords\"", "password_file = \"mqtt-password\""})
        EXPECT_NE(example.find(key), std::string::npos) << key;
}

} // namespace
