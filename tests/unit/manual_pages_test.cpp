// manual_pages_test.cpp - the manual pages name what the programs accept and write.
#include "unit/config_fixture.hpp"
#include "unit/document_text.hpp"

#include "base/limits.hpp"
#include "sim_program.hpp"

#include <sstream>

namespace
{

const char* const client_page = "share/man/ncursesclient.1";
const char* const config_page = "share/man/ncursesclient.conf.5";
const char* const sim_page = "share/man/tovriksim.1";

TEST(manual_pages, name_every_option_of_the_practice_server)
{
    sim_program asked({"--help"});
    const std::string help = asked.rest();
    ASSERT_EQ(asked.status(), 0);
    const auto options = matches_of(help, R"(\n +(?:-\w, *)?--([a-z-]+)[ \n])");
    EXPECT_EQ(matches_of(source_text(sim_page), R"(\n\.It (?:Fl h , )?Fl Fl ([a-z-]+))"), options);
    const std::string readme =
        text_between(source_text("README.md"), "\n## The practice server\n", "\n## ");
    for (const std::string& option : matches_of(readme, R"([` ]--([a-z-]+)[ `])"))
        EXPECT_TRUE(options.contains(option)) << option;
}

TEST(help_of_the_practice_server, fits_terminals_of_80_columns)
{
    sim_program asked({"--help"});
    std::istringstream help{asked.rest()};
    ASSERT_EQ(asked.status(), 0);
    int lines = 0;
    for (std::string line; std::getline(help, line); ++lines)
        EXPECT_LT(line.size(), 79U) << line << ": newer libraries add a blank to each line";
    EXPECT_GT(lines, 24);
}

TEST(manual_pages, give_the_defaults_of_the_practice_server)
{
    sim_program asked({"--help"});
    const std::string help = asked.rest();
    const std::string page = source_text(sim_page);
    // After "=" or in brackets, depending on the version of the library that prints it.
    const auto defaults = all_matches(help, R"(\n +--([a-z-]+) [A-Z]+(?:=| \[)([^\s\]]+))");
    EXPECT_GT(defaults.size(), 5U);
    for (const auto& option : defaults) {
        const std::string entry = text_between(page, "\n.It Fl Fl " + option[0] + " Ar ", "\n.It ");
        const std::string words = std::regex_replace(entry, std::regex{"\n(\\.Dq )?"}, " ");
        const bool is_first = words.find(option[1] + " , the default") != std::string::npos;
        EXPECT_TRUE(is_first || words.find("default is " + option[1]) != std::string::npos)
            << option[0] << '=' << option[1] << ": " << words;
    }
}

TEST(manual_pages, name_every_exit_status_and_complaint_of_a_failed_start)
{
    const std::string page = source_text(client_page);
    const std::string status =
        text_between(source_text("src/app/start_stop.hpp"), "start_failed_status = ", ";");
    EXPECT_NE(page.find("\n.It " + status + "\n"), std::string::npos);
    for (const std::string& line :
         matches_of(source_text("src/app/start_stop.cpp"), R"re(fail_start\("([^"\\]+))re"))
        EXPECT_NE(page.find(".Dq " + line + '\n'), std::string::npos) << line;
}

TEST(manual_pages, name_every_signal_that_is_acted_on)
{
    const std::string page = source_text(client_page);
    const std::string code = source_text("src/app/job_control.cpp");
    for (const std::string& name :
         matches_of(text_between(code, "ending_signals[] = {", "}"), R"((SIG\w+))"))
        EXPECT_NE(page.find(name), std::string::npos) << name;
    for (const std::string& name : matches_of(code, R"(signal_install\((SIG\w+))"))
        EXPECT_NE(page.find(name), std::string::npos) << name;
}

class config_page_elements : public config_test
{
protected:
    /// Names of the elements that are written for a server with all fields set.
    std::set<std::string> written_elements()
    {
        load("<?xml?><clientconf><Server1><ServerName>one</ServerName></Server1></clientconf>");
        save();
        return matches_of(home.read_config().value_or(""), R"(<(\w+)[ >])");
    }
};

TEST_F(config_page_elements, are_those_that_the_program_writes)
{
    auto named = matches_of(source_text(config_page), R"(\n\.It Cm (\w+))");
    named.insert({"clientconf", "Server1"});
    const auto written = written_elements();
    EXPECT_EQ(named, written);
    for (const char* file : {"share/ncursesclient.conf.example", "README.md"}) {
        const std::string example =
            text_between(source_text(file), "<clientconf", "</clientconf>") + "<clientconf>";
        EXPECT_EQ(matches_of(example, R"(<([A-Z]\w+|clientconf)>)"), written) << file;
    }
}

TEST_F(config_page_elements, are_understood_in_the_example)
{
    load(text_between(source_text(config_page), "\n.Bd -literal\n", "\n.Ed\n"));
    ASSERT_EQ(app_state.servers->count, 2);
    EXPECT_EQ(app_state.setting_flags, unsigned{SaveToOne} | unsigned{SaveOnExit});
    EXPECT_STREQ(folder_setting(LogFilePath), "/var/tmp");
}

TEST(manual_pages, give_the_bounds_and_names_of_the_code)
{
    static_assert(config_max_bytes == 64UL << 20 && log_name_bytes == 256);
    EXPECT_NE(source_text(config_page).find("larger than 64 MiB"), std::string::npos);
    EXPECT_NE(source_text(client_page).find("longer than 255 bytes"), std::string::npos);
    for (const char* page : {"README.md", client_page})
        for (const char* word : {"ncursesclient.conf", "ncursesclient.hlp", "ACARS.log",
                                 "NAME/FOLDER.log", "copytruncate"})
            EXPECT_NE(source_text(page).find(word), std::string::npos) << page << ": " << word;
}

} // namespace
