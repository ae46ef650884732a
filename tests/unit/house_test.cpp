// house_test.cpp - functions and files stay small, and state stays in its record.
#include "support/command_lines.hpp"
#include "unit/document_text.hpp"

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

namespace
{

/// The lines of every source file below a folder of the tree, by the file's path from the root.
std::map<std::string, std::vector<std::string>> sources_below(const std::string& folder)
{
    std::map<std::string, std::vector<std::string>> sources;
    const std::filesystem::path root = SOURCE_FOLDER;
    for (const auto& file : std::filesystem::recursive_directory_iterator{root / folder}) {
        const std::string kind = file.path().extension();
        if (kind != ".cpp" && kind != ".hpp")
            continue;
        const std::string path = std::filesystem::relative(file.path(), root);
        std::istringstream text{source_text(path)};
        for (std::string line; std::getline(text, line);)
            sources[path].push_back(line);
    }
    EXPECT_FALSE(sources.empty()) << folder;
    return sources;
}

struct function_place {
    std::string file;
    std::size_t line;  // of its first line, from 1
    std::size_t lines; // from there to its closing brace
};

/// Every function with a body of its own lines. The formatter gives them, and little else, an
/// opening brace on a line of its own.
std::vector<function_place> functions_below(const std::string& folder)
{
    static const std::regex no_function{R"(^\s*(namespace|class|struct|enum|extern)\b)"};
    std::vector<function_place> functions;
    for (const auto& [file, lines] : sources_below(folder)) {
        for (std::size_t brace = 1; brace < lines.size(); ++brace) {
            const std::size_t indent = lines[brace].size() - 1;
            if (lines[brace].empty() || lines[brace] != std::string(indent, ' ') + "{")
                continue;
            std::size_t first = brace - 1;
            while (first > 0 && lines[first].find_first_not_of(' ') > indent)
                --first;
            if (std::regex_search(lines[first], no_function))
                continue;
            const auto closing = std::find(lines.begin() + static_cast<std::ptrdiff_t>(brace),
                                           lines.end(), std::string(indent, ' ') + "}");
            const auto last = static_cast<std::size_t>(closing - lines.begin());
            functions.push_back({file, first + 1, last - first + 1});
        }
    }
    std::ranges::sort(functions, {}, &function_place::lines);
    return functions;
}

class house : public testing::TestWithParam<const char*>
{
};

INSTANTIATE_TEST_SUITE_P(folder, house, testing::Values("src", "server"),
                         [](const auto& folder) { return std::string{folder.param}; });

TEST_P(house, functions_are_short)
{
    const std::vector<function_place> functions = functions_below(GetParam());
    ASSERT_GT(functions.size(), 200U);
    EXPECT_LE(functions[functions.size() / 2].lines, 10U) << "the median";
    EXPECT_LE(functions[functions.size() * 9 / 10].lines, 40U) << "nine in ten";
    EXPECT_LE(functions.back().lines, 80U) << functions.back().file << ":" << functions.back().line;
}

/// The names of a file's private functions: those of its unnamed namespaces, at the left margin.
std::vector<std::string> private_functions_of(const std::vector<std::string>& lines)
{
    static const std::regex named{R"(([a-z_0-9]+)\()"};
    std::vector<std::string> names;
    bool is_private = false;
    for (std::size_t line = 1; line < lines.size(); ++line) {
        if (lines[line] == "{" && lines[line - 1] == "namespace")
            is_private = true;
        else if (lines[line].starts_with("} // namespace"))
            is_private = false;
        if (!is_private || lines[line] != "{")
            continue;
        std::size_t first = line - 1;
        while (first > 0 && lines[first].starts_with(' '))
            --first;
        std::smatch match;
        if (std::regex_search(lines[first], match, named))
            names.push_back(match[1]);
    }
    return names;
}

/// What a private function does, or asks, stands first in its name. A new verb is added here; a
/// noun is not.
const std::set<std::string> leading_words = {
    "accept",     "add",       "admit",     "allocate",     "announce", "answer",   "append",
    "apply",      "archive",   "ask",       "authenticate", "begin",    "blank",    "bound",
    "change",     "check",     "choose",    "clear",        "close",    "collect",  "compare",
    "complain",   "complete",  "compute",   "connect",      "continue", "copy",     "count",
    "default",    "define",    "dispatch",  "draw",         "drop",     "edit",     "encode",
    "end",        "erase",     "extract",   "fail",         "feature",  "fetch",    "fill",
    "find",       "finish",    "fit",       "flies",        "follow",   "forget",   "format",
    "free",       "generate",  "give",      "has",          "hold",     "indent",   "install",
    "introduce",  "is",        "join",      "keep",         "leave",    "limit",    "look",
    "make",       "matches",   "may",       "merge",        "mix",      "move",     "name",
    "neutralise", "number",    "on",        "open",         "pack",     "pad",      "paint",
    "parse",      "pass",      "pick",      "prepare",      "print",    "publish",  "put",
    "queue",      "raise",     "read",      "rebuild",      "receive",  "record",   "redraw",
    "refresh",    "refuse",    "remember",  "remove",       "renew",    "replace",  "report",
    "reserve",    "resolve",   "restrict",  "run",          "save",     "schedule", "scroll",
    "send",       "serve",     "set",       "show",         "silence",  "split",    "spoil",
    "start",      "store",     "subscribe", "switch",       "sync",     "take",     "talk",
    "tell",       "terminate", "toggle",    "touch",        "trim",     "turn",     "unescape",
    "visit",      "wait",      "watch",     "write",
};

/// Value questions may be nouns: what is asked of what.
bool is_value_question(const std::string& name)
{
    return name.ends_with("_of") || name.find("_of_") != std::string::npos ||
           name.find("_or_") != std::string::npos || name.starts_with("or_");
}

TEST_P(house, private_functions_begin_with_their_verb)
{
    std::size_t count = 0;
    for (const auto& [file, lines] : sources_below(GetParam())) {
        for (const std::string& name : private_functions_of(lines)) {
            ++count;
            EXPECT_TRUE(leading_words.contains(name.substr(0, name.find('_'))) ||
                        is_value_question(name))
                << file << ": " << name;
        }
    }
    EXPECT_GT(count, 100U);
}

TEST(files_of_the_house, are_short)
{
    for (const char* folder : {"src", "server", "tests"})
        for (const auto& [file, lines] : sources_below(folder))
            EXPECT_LE(lines.size(), 400U) << file;
}

TEST(variables_of_the_house, are_in_the_record_of_the_state_or_have_a_reason)
{
    if (!CLIENT_IS_HARDENED)
        GTEST_SKIP() << "the sanitizers add variables of their own";
    const std::set<std::string> wanted = {
        "app_state",
        // Needed where the record may not be touched: in handlers, and to take its lock.
        "state_lock",
        "open_mask",
        "signal_handlers",
        "rescue",
    };
    // An inline variable of a header has a section of its own, named after it; a pointer that the
    // loader fills in is kept apart as well. What the loader then makes read-only is a constant.
    static const std::regex variable{
        R"( O \.t?(?:bss|data)(?!\.rel\.ro)(?:\.\S+)?\t[0-9a-f]+ (?:\.hidden )?(.*)\n)"};
    std::set<std::string> found;
    for (const std::string& line :
         command_lines("LC_ALL=C objdump --syms --demangle '" CLIENT_CORE "'")) {
        std::smatch match;
        if (!std::regex_search(line, match, variable))
            continue;
        const std::string name =
            std::regex_replace(match[1].str(), std::regex{R"(\(anonymous namespace\)::)"}, "");
        if (!name.starts_with("guard variable") && !name.starts_with("DW.ref."))
            found.insert(name);
    }
    EXPECT_EQ(found, wanted);
}

} // namespace
