// scripts_test.cpp - the scripts explain themselves, install what they need, and find their tests.
#include "support/command_lines.hpp"
#include "unit/document_text.hpp"

#include <algorithm>
#include <filesystem>

namespace
{

const std::string scripts_folder = SOURCE_FOLDER "/scripts/";

/// Files that scripts read have no use of their own.
bool is_program(const std::filesystem::directory_entry& file)
{
    const auto may_run = file.status().permissions() & std::filesystem::perms::owner_exec;
    return file.is_regular_file() && may_run != std::filesystem::perms::none;
}

/// The scripts that people run. Those in folders are parts of others.
std::vector<std::string> script_names()
{
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator{scripts_folder})
        if (is_program(file))
            names.push_back(file.path().filename());
    return names;
}

/// What a script says of itself, whole. It must end by itself before it does anything.
std::string help_of(const std::string& script)
{
    std::string help;
    const std::string whole = "timeout 10 '" + scripts_folder + script + "' --help </dev/null";
    for (const std::string& line : command_lines(whole))
        help += line;
    return help;
}

/// The packages that install-deps names for a set, where there is no apt-get to install them.
std::set<std::string> packages_of(const std::string& set)
{
    std::set<std::string> packages;
    const std::string whole =
        "PATH=/nowhere /bin/bash '" + scripts_folder + "install-deps' " + set + " 2>&1 || :";
    for (const std::string& line : command_lines(whole))
        if (line.starts_with("  "))
            packages.insert(line.substr(2, line.size() - 3));
    return packages;
}

/// The options of install-deps that choose a set, as its help lists them.
std::set<std::string> package_sets()
{
    return matches_of(help_of("install-deps"), R"(\n +(--[a-z+]+) )");
}

TEST(scripts, tell_their_use)
{
    const std::vector<std::string> names = script_names();
    EXPECT_GT(names.size(), 10U);
    for (const std::string& name : names)
        EXPECT_NE(help_of(name).find("\n  scripts/" + name), std::string::npos) << name;
}

TEST(scripts, install_packages_of_any_version)
{
    std::set<std::string> sets = package_sets();
    sets.erase("--libc++"); // the newest version, which has no name without its number
    for (const std::string& set : sets)
        for (const std::string& package : packages_of(set))
            EXPECT_FALSE(std::regex_search(package, std::regex{"-[0-9][0-9.]*(-|$)"})) << package;
}

TEST(scripts, install_little_for_the_programs_and_more_by_options)
{
    const std::set<std::string> least = packages_of("");
    EXPECT_TRUE(least.contains("cmake"));
    std::set<std::string> all = least;
    for (const std::string& set : package_sets()) {
        const std::set<std::string> packages = packages_of(set);
        EXPECT_TRUE(std::ranges::includes(packages, least)) << set;
        EXPECT_GT(packages.size(), least.size()) << set;
        all.insert(packages.begin(), packages.end());
    }
    for (const char* package : {"clang", "gcovr", "libgtest-dev", "lintian", "irssi"}) {
        EXPECT_TRUE(all.contains(package)) << package;
        EXPECT_FALSE(least.contains(package)) << package;
    }
}

TEST(scripts, ask_for_sets_that_there_are)
{
    const std::set<std::string> sets = package_sets();
    for (const auto& file : std::filesystem::recursive_directory_iterator{scripts_folder}) {
        if (!file.is_regular_file())
            continue;
        const std::string text = source_text(std::filesystem::relative(file.path(), SOURCE_FOLDER));
        for (const auto& set :
             all_matches(text, R"((?:install-deps"? |package_sets\+?=\()(--[a-z+]+))"))
            EXPECT_TRUE(sets.contains(set[0])) << file.path() << ": " << set[0];
    }
}

TEST(demo, sends_so_seldom_that_a_window_can_be_read_before_a_message_closes_it)
{
    const std::string rates = text_between(source_text("scripts/demo"), "\nheathrow_rate", "\n");
    int per_minute = 0;
    for (const auto& rate : all_matches(rates, R"(=(\d+))"))
        per_minute += std::stoi(rate[0]);
    EXPECT_GT(per_minute, 0);
    EXPECT_LE(per_minute, 12);
}

TEST(demo, names_its_servers_so_that_their_rows_fit_into_80_columns)
{
    const std::string script = source_text("scripts/demo");
    for (const std::string& alias : matches_of(script, R"(<ServerAlias>([^<]+)<)"))
        EXPECT_LE(("Successfully connected " + alias + ":65535. Handle #99").size(), 52U);
}

/// The kinds of tests, by the first words of their names, as the build files name them.
std::set<std::string> kinds_of_tests()
{
    std::set<std::string> kinds;
    for (const auto& file : std::filesystem::recursive_directory_iterator{SOURCE_FOLDER "/tests"}) {
        if (file.path().filename() != "CMakeLists.txt")
            continue;
        const auto path = std::filesystem::relative(file.path(), SOURCE_FOLDER);
        for (const auto& kind :
             all_matches(source_text(path), R"((?:TEST_PREFIX|add_test\(NAME) ([a-z0-9]+)\.)"))
            kinds.insert(kind[0]);
    }
    return kinds;
}

TEST(scripts, know_what_each_kind_of_test_is_built_from)
{
    const std::string script = source_text("scripts/test");
    const std::string table = text_between(script, "kind_targets=(", "\n)");
    EXPECT_EQ(matches_of(table, R"(\[([a-z0-9]+)\]=)"), kinds_of_tests());
    const std::string folders = text_between(script, "kind_sources=(", ")");
    for (const auto& folder : all_matches(folders, R"(\]=([a-z0-9/]+))"))
        EXPECT_TRUE(std::filesystem::exists(SOURCE_FOLDER "/" + folder[0])) << folder[0];
}

} // namespace
