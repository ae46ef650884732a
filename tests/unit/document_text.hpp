// document_text.hpp - texts of this source tree, for tests that compare documents with code.
#pragma once

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

/// A whole file of the source tree. path: from its root. A missing file fails the test.
inline std::string source_text(const std::string& path)
{
    std::ifstream file{SOURCE_FOLDER "/" + path};
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>{file}, {}};
}

/// The text between two texts; a missing one fails the test.
inline std::string text_between(const std::string& text, const std::string& begin,
                                const std::string& end)
{
    const auto from = text.find(begin);
    EXPECT_NE(from, std::string::npos) << begin;
    if (from == std::string::npos)
        return {};
    const auto after = from + begin.size();
    const auto to = text.find(end, after);
    EXPECT_NE(to, std::string::npos) << end;
    return text.substr(after, to == std::string::npos ? to : to - after);
}

/// The groups of every match, in order. A pattern without groups gives the matches themselves.
inline std::vector<std::vector<std::string>> all_matches(const std::string& text,
                                                         const std::string& pattern)
{
    const std::regex expression{pattern};
    std::vector<std::vector<std::string>> matches;
    for (std::sregex_iterator match{text.begin(), text.end(), expression}, none; match != none;
         ++match) {
        std::vector<std::string> groups;
        for (std::size_t group = match->size() > 1 ? 1 : 0; group < match->size(); ++group)
            groups.push_back((*match)[group]);
        matches.push_back(std::move(groups));
    }
    return matches;
}

/// The first group of every match; without any match the test fails.
inline std::set<std::string> matches_of(const std::string& text, const std::string& pattern)
{
    std::set<std::string> firsts;
    for (const auto& groups : all_matches(text, pattern))
        firsts.insert(groups.front());
    EXPECT_FALSE(firsts.empty()) << pattern;
    return firsts;
}
