// documents_test.cpp - the documents' examples apply, and their links lead somewhere.
#include "support/temp_home.hpp"
#include "unit/document_text.hpp"

#include "app/app_state.hpp"

#include <cstdlib>
#include <filesystem>

namespace
{

const char* const documents[] = {"README.md", "CONTRIBUTING.md", "CHANGELOG.md",
                                 "docs/architecture.md", "docs/protocol.md"};

TEST(documents, show_diffs_that_apply_to_the_code)
{
    const std::string text = source_text("CONTRIBUTING.md");
    const temp_home folder;
    int count = 0;
    for (auto begin = text.find("\n```diff\n"); begin != std::string::npos;
         begin = text.find("\n```diff\n", begin + 1)) {
        const std::string diff = text_between(text.substr(begin), "\n```diff\n", "\n```\n") + '\n';
        folder.write_file("example.diff", diff);
        const std::string command =
            "patch --dry-run --batch --forward --fuzz=0 -p1 -d '" + std::string{SOURCE_FOLDER} +
            "' <'" + folder.path_of("example.diff") + "' >'" + folder.path_of("said") + "' 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0) << folder.read_file("said").value_or("") << diff;
        ++count;
    }
    EXPECT_EQ(count, 4);
}

TEST(documents, name_files_that_are_there)
{
    for (const char* document : documents) {
        const std::string text = source_text(document);
        for (const auto& path : all_matches(
                 text, R"(`((?:src|server|tests|share|scripts|docs)(?:/[a-z0-9_.]+)+)[` ])"))
            EXPECT_TRUE(std::filesystem::exists(SOURCE_FOLDER "/" + path[0]))
                << document << ": " << path[0];
    }
}

TEST(documents, link_to_files_and_headings_that_are_there)
{
    for (const char* document : documents) {
        const std::string text = source_text(document);
        const auto folder = std::filesystem::path{SOURCE_FOLDER "/"} / document;
        for (const auto& link : all_matches(text, R"(\]\(([A-Za-z][^):#]*)\))"))
            EXPECT_TRUE(std::filesystem::exists(folder.parent_path() / link[0]))
                << document << ": " << link[0];
        for (const auto& link : all_matches(text, R"(\]\(#([a-z-]+)\))")) {
            const std::string words = std::regex_replace(link[0], std::regex{"-"}, "[ -]");
            EXPECT_TRUE(
                std::regex_search(text, std::regex{"\n#+ " + words + "\n", std::regex::icase}))
                << document << ": #" << link[0];
        }
    }
}

TEST(documents, give_the_version_of_the_program)
{
    EXPECT_NE(source_text("CHANGELOG.md").find(std::string{"\n## ["} + client_version + "]"),
              std::string::npos);
    EXPECT_NE(source_text("CMakeLists.txt").find(std::string{"VERSION "} + client_version + " "),
              std::string::npos);
    EXPECT_NE(source_text("docs/protocol.md").find(std::string{"tovrikclient-"} + client_version),
              std::string::npos);
}

} // namespace
