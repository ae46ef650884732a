// rendered_pages_test.cpp - what readers see of the manual pages is what was written.
#include "support/command_lines.hpp"
#include "unit/document_text.hpp"

#include <cctype>
#include <filesystem>
#include <sstream>

namespace
{

/// The macros that the pages use within a line. Any other word is text, even if it is the name of
/// a macro: the formatter takes the "No" of "No configuration found" for one, and drops it.
const std::set<std::string> inline_macros = {"Ar", "Cm", "Dq", "Dv", "Ev", "Fl", "Ic", "It",
                                             "Nm", "Ns", "Op", "Pa", "Pq", "Ql", "Sx", "Xr"};

/// Lines that print nothing of what they say, or not in this place.
const std::set<std::string> silent_macros = {"Bd", "Bl", "Dd", "Dt", "Ed", "El", "Nd", "Os", "Pp"};

constexpr std::size_t widest_gap = 60;

/// The text without white space, quotes and other signs that formatters write in their own ways.
std::string keep_plain_signs(const std::string& text)
{
    std::string plain;
    for (const char sign : text)
        if (std::isalnum(static_cast<unsigned char>(sign)) != 0 || std::ispunct(sign) != 0)
            plain += std::string_view{"\"'`-"}.find(sign) == std::string_view::npos ? sign : ' ';
    std::erase(plain, ' ');
    return plain;
}

/// The words of a page's source that its reader must see, in order.
std::vector<std::string> read_words(const std::string& source)
{
    std::vector<std::string> words;
    std::istringstream lines{source};
    for (std::string line; std::getline(lines, line);) {
        line = std::regex_replace(line, std::regex{R"(\\&)"}, "");
        line = std::regex_replace(line, std::regex{R"(\\e)"}, "\\");
        const bool is_macro_line = line.starts_with('.');
        if (is_macro_line && silent_macros.contains(line.substr(1, 2)))
            continue;
        std::istringstream rest{is_macro_line ? line.substr(1) : line};
        for (std::string word; rest >> word;) {
            const bool is_heading = is_macro_line && (word == "Sh" || word == "Ss");
            const std::string plain = keep_plain_signs(word);
            if (!is_heading && !(is_macro_line && inline_macros.contains(word)) && !plain.empty())
                words.push_back(plain);
        }
    }
    return words;
}

/// A page as a formatter's command renders it, in plain signs.
std::string render_page(const std::string& command, const std::string& page)
{
    std::string text;
    const std::string whole = command + " '" + page + "' | LC_ALL=C.UTF-8 col -b";
    for (const std::string& line : command_lines(whole))
        text += line;
    // groff breaks long words with a hyphen of its own.
    return keep_plain_signs(std::regex_replace(text, std::regex{"\u2010\n *"}, ""));
}

void expect_words(const std::string& rendered, const std::vector<std::string>& words)
{
    std::size_t at = rendered.find("NAME");
    ASSERT_NE(at, std::string::npos);
    for (const std::string& word : words) {
        const std::size_t found = rendered.find(word, at);
        ASSERT_LE(found, at + widest_gap)
            << "not shown: " << word << ", after: " << rendered.substr(at > 60 ? at - 60 : 0, 60);
        at = found + word.size();
    }
}

class rendered_pages : public testing::TestWithParam<const char*>
{
};

TEST_P(rendered_pages, show_every_word_that_was_written)
{
    const std::string name = GetParam();
    const std::vector<std::string> words = read_words(source_text("share/man/" + name));
    EXPECT_GT(words.size(), 100U);
    const std::string page = SOURCE_FOLDER "/share/man/" + name;
    expect_words(render_page("mandoc -T utf8", page), words);
    if (!command_lines("command -v groff || echo").front().starts_with('/'))
        GTEST_SKIP() << "shown by mandoc; there is no groff to try";
    expect_words(render_page("groff -mandoc -T utf8", page), words);
}

INSTANTIATE_TEST_SUITE_P(each, rendered_pages,
                         testing::Values("ncursesclient.1", "ncursesclient-setup.1",
                                         "ncursesclient.conf.5", "tovriksim.1", "tovrikd.8",
                                         "tovrikd.toml.5"));

TEST(rendered_page_tests, know_all_pages)
{
    const std::string tests = source_text("tests/unit/rendered_pages_test.cpp");
    for (const auto& file : std::filesystem::directory_iterator{SOURCE_FOLDER "/share/man"})
        EXPECT_NE(tests.find('"' + file.path().filename().string() + '"'), std::string::npos)
            << file.path();
}

} // namespace
