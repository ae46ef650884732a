// packaging_test.cpp - the Debian packages follow the program's version and can be built with what
// scripts/install-deps installs.
#include "support/command_lines.hpp"
#include "unit/document_text.hpp"

#include "app/app_state.hpp"

#include <algorithm>

namespace
{

/// The relationship field of a package's record, as names without versions.
std::set<std::string> names_of_field(const std::string& field)
{
    const std::string control = source_text("debian/control");
    const std::string names = text_between(control, '\n' + field + ":", "\nStandards-Version");
    return matches_of(names, R"(\n ([a-z0-9-]+))");
}

TEST(packaging, has_the_version_of_the_program_and_follows_the_package_without_a_revision)
{
    const std::string version =
        text_between(source_text("debian/changelog"), "ncursesclient (", ")");
    EXPECT_TRUE(std::regex_match(version, std::regex{std::string{client_version} + "-[1-9][0-9]*"}))
        << version;
    const std::string control = source_text("debian/control");
    for (const char* field : {"Breaks", "Replaces"})
        EXPECT_NE(control.find(std::string{"\n"} + field + ": ncursesclient (<< " + client_version +
                               "-1~)\n"),
                  std::string::npos)
            << field;
}

TEST(packaging, needs_nothing_that_is_not_installed_for_it)
{
    const auto installed = command_lines("PATH=/nowhere /bin/bash '" SOURCE_FOLDER
                                         "/scripts/install-deps' --package 2>&1 || :");
    for (const std::string& name : names_of_field("Build-Depends")) {
        const std::string package = name == "debhelper-compat" ? "debhelper" : name;
        EXPECT_EQ(std::ranges::count(installed, "  " + package + '\n'), 1) << package;
    }
}

TEST(packaging, tells_the_terms_in_one_place)
{
    EXPECT_NE(source_text("debian/copyright").find("\nLicense: "), std::string::npos);
    EXPECT_NE(source_text("README.md").find("[debian/copyright](debian/copyright)"),
              std::string::npos);
    EXPECT_NE(source_text("CMakeLists.txt").find("install(FILES debian/copyright "),
              std::string::npos);
    // Software centres want the terms' name in a form of their own.
    const bool is_undecided =
        source_text("debian/copyright").find("\nLicense: all-rights-reserved\n") !=
        std::string::npos;
    EXPECT_EQ(source_text("share/metainfo/ncursesclient.metainfo.xml")
                      .find("<project_license>LicenseRef-proprietary<") != std::string::npos,
              is_undecided);
}

} // namespace
