// key_tables_test.cpp - README, help, manual pages and screen name the keys of the program.
#include "unit/document_text.hpp"

#include "data/settings_table.hpp"

#include <cctype>
#include <map>

namespace
{

using key_names = std::set<std::string>;

struct command {
    std::string name;
    std::string need;       // as in the table: nothing, selection or connection
    std::string capability; // the field of server_entry whose row it names; empty: none needed
};

/// The key table's rows, with the keys named as in the documents.
const std::vector<command>& read_commands()
{
    static const auto rows = [] {
        const std::string code = source_text("src/app/main_loop.cpp");
        const std::string exit_key =
            text_between(source_text("src/ui/keys.hpp"), "key_exit = control('", "'");
        std::vector<command> found = {{"^" + exit_key, "nothing", ""}};
        const std::string row =
            R"(\{(?:control\('(\w)'\)|key_(enter)|KEY_(\w+)), )"
            R"(command_need::(\w+), \w+(?:, &capability_of\(&server_entry::(\w+)\))?)";
        for (const auto& parts :
             all_matches(text_between(code, "key_commands[] = {", "\n};"), row)) {
            std::string name = parts[0].empty() ? parts[1] + parts[2] : "^" + parts[0];
            for (std::size_t index = 1; index < name.size(); ++index)
                if (name[0] != '^')
                    name[index] = static_cast<char>(std::tolower(name[index]));
            name[0] = static_cast<char>(std::toupper(name[0]));
            found.push_back({name, parts[3], parts[4]});
        }
        return found;
    }();
    return rows;
}

key_names collect_command_keys()
{
    key_names keys;
    for (const command& row : read_commands())
        EXPECT_TRUE(keys.insert(row.name).second) << "twice: " << row.name;
    return keys;
}

/// The keys that a text names; other names of the same key are in brackets and do not count.
key_names find_keys(const std::string& text)
{
    const std::string plain = std::regex_replace(text, std::regex{R"(\([^)]*\))"}, "");
    return matches_of(plain, R"((\^[A-Z]|\bUp\b|\bDown\b|\bEnter\b))");
}

/// The manual's entries: the keys of each with their description.
std::map<std::string, std::string> read_manual_entries()
{
    const std::string page = source_text("share/man/ncursesclient.1");
    std::map<std::string, std::string> entries;
    std::string rest = text_between(page, "\n.Sh KEYS\n", "\n.Ss Settings\n");
    rest += "\n.It ";
    for (auto begin = rest.find("\n.It "); begin != std::string::npos;) {
        const auto end = rest.find("\n.It ", begin + 1);
        const std::string entry = rest.substr(begin + 1, end - begin - 1);
        for (const auto& key : all_matches(entry.substr(0, entry.find('\n')), R"(Ic (\S+))"))
            entries[key[0]] = entry;
        begin = end;
    }
    return entries;
}

TEST(key_tables, the_readme_names_every_key)
{
    const std::string section = text_between(source_text("README.md"), "\n## Keys\n", "\n## ");
    key_names keys;
    for (const auto& row : all_matches(section, R"(\n\| ([^|]+) \|)"))
        if (row[0] != "key")
            keys.merge(find_keys(row[0]));
    EXPECT_EQ(keys, collect_command_keys());
}

TEST(key_tables, the_help_names_every_key)
{
    const std::string help = source_text("share/ncursesclient.hlp");
    EXPECT_EQ(find_keys(help.substr(0, help.find("\n\n"))), collect_command_keys());
}

TEST(key_tables, the_manual_page_names_every_key)
{
    key_names keys;
    for (const auto& [key, entry] : read_manual_entries())
        keys.insert(key);
    EXPECT_EQ(keys, collect_command_keys());
}

TEST(key_tables, the_manual_page_says_what_every_command_needs)
{
    const std::map<std::string, std::string> offers = {{"", ""},
                                                       {"can_modify", "allows updates"},
                                                       {"can_mail", "allows updates"},
                                                       {"can_report", "offers reports"},
                                                       {"can_page", "offers pager lists"}};
    const auto entries = read_manual_entries();
    for (const command& row : read_commands()) {
        ASSERT_TRUE(entries.contains(row.name)) << row.name;
        const std::string entry = std::regex_replace(entries.at(row.name), std::regex{"\n"}, " ");
        const bool is_service = entry.find("Needs a connection to a server that") != entry.npos;
        EXPECT_EQ(is_service, row.need == "connection") << entry;
        ASSERT_TRUE(offers.contains(row.capability)) << row.capability;
        EXPECT_NE(entry.find(offers.at(row.capability)), entry.npos) << entry;
    }
}

TEST(key_tables, the_last_row_of_the_screen_names_only_keys)
{
    const std::string line =
        text_between(source_text("src/ui/screen.cpp"), "key_line_text = ", ";");
    const key_names all = collect_command_keys();
    for (const std::string& key : find_keys(line))
        EXPECT_TRUE(all.contains(key)) << key;
}

/// The hot keys as the documents name them, with the setting of each.
std::map<std::string, std::string> collect_hot_keys()
{
    std::map<std::string, std::string> keys;
    const auto add = [&keys](int hot_key, const char* setting) {
        if (hot_key != 0)
            keys[std::string{"ALT+"} + static_cast<char>(std::toupper(hot_key & 0x7F))] = setting;
    };
    for (std::size_t index = 0; index < checkbox_setting_count; ++index)
        add(checkbox_setting_table[index].hot_key, checkbox_setting_table[index].key);
    for (std::size_t index = 0; index < setting_text_count; ++index)
        add(text_setting_table[index].hot_key, text_setting_table[index].key);
    return keys;
}

std::map<std::string, std::string> find_pairs(const std::string& text, const std::string& pattern,
                                              bool setting_comes_first)
{
    std::map<std::string, std::string> pairs;
    for (const auto& match : all_matches(text, pattern))
        pairs[match[setting_comes_first ? 1 : 0]] = match[setting_comes_first ? 0 : 1];
    return pairs;
}

TEST(key_tables, the_manual_pages_name_every_hot_key)
{
    EXPECT_EQ(find_pairs(source_text("share/man/ncursesclient.1"),
                         R"(\n\.It Ic (ALT\+\w)\n\.Cm (\w+))", false),
              collect_hot_keys());
    EXPECT_EQ(find_pairs(source_text("share/man/ncursesclient.conf.5"),
                         R"(\n\.It Cm (\w+) Pq Ic (ALT\+\w)\n)", true),
              collect_hot_keys());
}

TEST(key_tables, the_readme_names_every_hot_key)
{
    EXPECT_EQ(find_pairs(source_text("README.md"), R"(\n\| `(\w+)` \| (ALT\+\w) \|)", true),
              collect_hot_keys());
}

} // namespace
