// kept_on_purpose_test.cpp - what is odd on purpose says so where it stands, names its test, and is
// listed in the architecture page.
#include "unit/document_text.hpp"

#include <filesystem>
#include <map>

namespace
{

/// Which tests the code's comments name, by file.
using named_tests = std::map<std::string, std::set<std::string>>;

/// All C++ sources below a folder, by their path from the root.
std::map<std::string, std::string> read_sources(const std::string& folder)
{
    std::map<std::string, std::string> sources;
    const std::filesystem::path root = SOURCE_FOLDER;
    for (const auto& file : std::filesystem::recursive_directory_iterator{root / folder}) {
        const std::string kind = file.path().extension();
        const std::string path = std::filesystem::relative(file.path(), root);
        if (kind == ".cpp" || kind == ".hpp")
            sources[path] = source_text(path);
    }
    return sources;
}

/// A text with the line breaks of its comments taken out.
std::string join_comments(const std::string& text)
{
    return std::regex_replace(text, std::regex{"\n *///? ?"}, " ");
}

named_tests find_in_code()
{
    static const std::string mark = "Kept on purpose: ";
    named_tests found;
    for (const auto& [path, text] : read_sources("src")) {
        const std::string joined = join_comments(text);
        for (auto at = joined.find(mark); at != std::string::npos; at = joined.find(mark, at + 1)) {
            const std::string comment = joined.substr(at, joined.find('\n', at) - at);
            const auto tests = all_matches(comment, R"(Test: ([a-z_0-9]+\.[a-z_0-9]+)\.)");
            EXPECT_FALSE(tests.empty()) << path << ": " << comment;
            for (const auto& test : tests)
                found[path].insert(test[0]);
        }
    }
    return found;
}

named_tests find_in_page()
{
    named_tests found;
    const std::string list =
        text_between(source_text("docs/architecture.md"), "\n## What is odd on purpose\n", "\n## ");
    for (const auto& row :
         all_matches(list, R"(\| `(src/[a-z_/.]+)` \| `([a-z_0-9]+\.[a-z_0-9]+)` \|)"))
        found[row[0]].insert(row[1]);
    return found;
}

TEST(oddities, are_listed_in_the_architecture_page)
{
    const named_tests in_code = find_in_code();
    EXPECT_GT(in_code.size(), 10U);
    EXPECT_EQ(in_code, find_in_page());
}

TEST(oddities, have_tests_that_exist)
{
    std::set<std::string> tests;
    for (const auto& [path, text] : read_sources("tests")) {
        for (const auto& test : all_matches(text, R"(\nTEST(?:_F|_P)?\((\w+),\s*(\w+)\))"))
            tests.insert(test[0] + "." + test[1]);
    }
    for (const auto& [path, named] : find_in_code()) {
        for (const std::string& test : named)
            EXPECT_TRUE(tests.contains(test)) << path << ": " << test;
    }
}

} // namespace
