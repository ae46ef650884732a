// tovrikd_example_test.cpp - the example of a configuration is good, complete and says the
// defaults.
#include "server/tovrikd/configuration_read.hpp"
#include "unit/document_text.hpp"

#include <sstream>

namespace
{

using tovrik::configuration;
using texts = std::vector<std::string>;

const char* const example_path = "share/tovrikd.toml.example";

/// Whether a line is a key or the beginning of a table that is commented out. Prose has a blank
/// after the sign.
bool is_commented_out(const std::string& line)
{
    return line.size() > 1 && line[0] == '#' && line[1] != ' ';
}

/// The example with the comment marks removed of the lines that `is_wanted` takes.
template <typename Wanted> std::string uncommented(Wanted is_wanted)
{
    std::istringstream lines{source_text(example_path)};
    std::string text;
    for (std::string line; std::getline(lines, line); text += '\n')
        text += is_commented_out(line) && is_wanted(line) ? line.substr(1) : line;
    return text;
}

configuration good(const std::string& text)
{
    const auto result = tovrik::configuration_read_text(text, "/etc/tovrikd/tovrikd.toml");
    EXPECT_EQ(result.mistakes, texts{}) << text;
    return result.made;
}

TEST(tovrikd_example, is_good_as_it_stands_and_has_the_defaults)
{
    configuration wanted;
    wanted.services.mailing = false;
    wanted.inputs = {{.name = "udp 5555", .port = 5555}};
    EXPECT_EQ(good(source_text(example_path)), wanted);
}

TEST(tovrikd_example, is_good_with_every_comment_mark_of_a_key_removed)
{
    const configuration made = good(uncommented([](const std::string&) { return true; }));
    EXPECT_EQ(made.inputs.size(), 6U);
    EXPECT_EQ(made.channels.size(), 1U);
    EXPECT_EQ(made.peers.size(), 1U);
    EXPECT_EQ(made.http.port, 8080);
    EXPECT_EQ(made.mail.from, "tovrikd@acars.example");
    EXPECT_EQ(made.access.passwords_file, "/etc/tovrikd/passwords");
}

TEST(tovrikd_example, gives_a_key_its_default_unless_the_line_above_says_something_else)
{
    bool is_default = true;
    bool is_after_key = false;
    bool is_whole_table_out = false;
    int count = 0;
    std::istringstream lines{source_text(example_path)};
    std::string changed;
    for (std::string line; std::getline(lines, line); changed += '\n') {
        const bool is_key = is_commented_out(line);
        is_whole_table_out = is_whole_table_out || line.starts_with("#[[");
        if (line.starts_with("# ")) {
            is_default = (is_after_key || is_default) && line.find("efault") == std::string::npos;
        } else if (!is_key) {
            is_default = true;
        }
        const bool is_tried = is_key && is_default && !is_whole_table_out;
        changed += is_tried ? line.substr(1) : line;
        count += is_tried ? 1 : 0;
        is_after_key = is_key;
    }
    EXPECT_GT(count, 20);
    EXPECT_EQ(good(changed), good(source_text(example_path)));
}

/// The keys and tables of the code, each once.
std::set<std::string> known_keys()
{
    std::set<std::string> keys = matches_of(source_text("server/tovrikd/configuration_tables.cpp"),
                                            R"(\n    \{"([a-z_]+)\",)");
    keys.merge(
        matches_of(source_text("server/tovrikd/input_table.cpp"), R"(\n    \{\{"([a-z_]+)\",)"));
    return keys;
}

TEST(tovrikd_example, names_every_key_and_nothing_else)
{
    std::set<std::string> named = matches_of(source_text(example_path), R"(\n#?([a-z_]+) = )");
    named.merge(matches_of(source_text(example_path), R"(\n#?\[+([a-z_]+)\])"));
    EXPECT_EQ(named, known_keys());
}

TEST(tovrikd_example, fits_terminals_of_80_columns)
{
    std::istringstream lines{source_text(example_path)};
    for (std::string line; std::getline(lines, line);)
        EXPECT_LT(line.size(), 80U) << line;
}

TEST(tovrikd_manual_page, names_every_key_of_the_configuration)
{
    std::set<std::string> named =
        matches_of(source_text("share/man/tovrikd.toml.5"), R"(\n\.It Cm ([a-z_]+))");
    named.merge(matches_of(source_text("share/man/tovrikd.toml.5"), R"(\n\.Ss \[+([a-z]+)\])"));
    EXPECT_EQ(named, known_keys());
}

TEST(tovrikd_manual_page, has_an_example_that_is_good)
{
    good(text_between(source_text("share/man/tovrikd.toml.5"), "\n.Bd -literal\n", "\n.Ed\n"));
}

} // namespace
