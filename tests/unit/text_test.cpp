// text_test.cpp - the shared string functions and their oddities.
#include "data/text.hpp"

#include "base/owners.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

std::string append(const char* text, const char* added)
{
    const heap_text result(str_append(str_dup(text), added));
    return result ? result.get() : "(null)";
}

std::string replace(const char* text, const char* pattern, const char* replacement)
{
    const heap_text result(str_replace(str_dup(text), pattern, replacement));
    return result ? result.get() : "(null)";
}

TEST(str_dup, copies_texts_and_passes_null_on)
{
    const char original[] = "caf\xE9";
    const heap_text copy(str_dup(original));
    EXPECT_STREQ(copy.get(), original);
    EXPECT_NE(copy.get(), original);
    const heap_text empty(str_dup(""));
    EXPECT_STREQ(empty.get(), "");
    EXPECT_EQ(str_dup(nullptr), nullptr);
}

TEST(str_append, joins_texts)
{
    EXPECT_EQ(append("clientconf/Server1/", "ServerName"), "clientconf/Server1/ServerName");
    EXPECT_EQ(append("", "x"), "x");
    EXPECT_EQ(append(nullptr, "x"), "x");
    EXPECT_EQ(append(nullptr, nullptr), "(null)");
    EXPECT_EQ(append(nullptr, ""), "(null)");
    const std::string long_text(10'000, 'y');
    EXPECT_EQ(append("x", long_text.c_str()), "x" + long_text);
}

TEST(str_append, returns_the_same_pointer_when_nothing_is_added)
{
    const heap_text text(str_dup("unchanged"));
    EXPECT_EQ(str_append(text.get(), ""), text.get());
    EXPECT_EQ(str_append(text.get(), nullptr), text.get());
    EXPECT_STREQ(text.get(), "unchanged");
}

TEST(str_replace, replaces_left_to_right_without_overlap_or_rescanning)
{
    const struct {
        const char* behaviour;
        const char* text;
        const char* pattern;
        const char* replacement;
        const char* expected;
    } rows[] = {
        {"grows", "clientconf/Server$/", "$", "12", "clientconf/Server12/"},
        {"null removes", "Save ~ACARS ~data~", "~", nullptr, "Save ACARS data"},
        {"the empty text removes", "~a~b~", "~", "", "ab"},
        {"all that there is may go", "~~", "~", "", ""},
        {"shrinks without overlap", "aaaa", "aa", "a", "aa"},
        {"a rest too short to match stays", "aaaaa", "aa", "b", "bba"},
        {"does not look into the inserted text", "aba", "a", "aa", "aabaa"},
        {"does not join old and inserted text", "aab", "ab", "b", "ab"},
        {"one byte by one byte", "a.b.c", ".", "/", "a/b/c"},
        {"equal lengths", "one two one", "one", "six", "six two six"},
        {"equal lengths without rescanning", "aaa", "aa", "ba", "baa"},
        {"grows at both ends", "xax", "x", "yyy", "yyyayyy"},
        {"the whole text", "pattern", "pattern", "p", "p"},
        {"no match", "text", "q", "qq", "text"},
        {"a pattern longer than the text", "ab", "abc", "x", "ab"},
        {"a half match, then a whole one", "ababc", "abc", "-", "ab-"},
        {"an empty pattern", "text", "", "x", "text"},
        {"an empty text", "", "x", "y", ""},
        {"no text", nullptr, "x", "y", "(null)"},
        {"high bytes", "\xE4\xFF\xE4", "\xE4", "\xFF\xFF", "\xFF\xFF\xFF\xFF\xFF"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(replace(row.text, row.pattern, row.replacement), row.expected) << row.behaviour;
}

TEST(str_replace, replaces_very_many_matches)
{
    const std::string text(20'000, 'a');
    EXPECT_EQ(replace(text.c_str(), "a", "bcd").size(), 60'000U);
    EXPECT_EQ(replace(text.c_str(), "aaaa", "b"), std::string(5'000, 'b'));
}

TEST(str_replace, returns_the_same_pointer_when_nothing_changes_length)
{
    const heap_text text(str_dup("a-b"));
    EXPECT_EQ(str_replace(text.get(), "x", "yy"), text.get());
    EXPECT_EQ(str_replace(text.get(), "-", "+"), text.get());
    EXPECT_STREQ(text.get(), "a+b");
}

struct split_row {
    const char* behaviour;
    const char* text;
    const char* separators;
    int slots;
    int count;
    std::vector<const char*> stored;
};

void expect_split(const split_row& row)
{
    SCOPED_TRACE(row.behaviour);
    char untouched[] = "untouched";
    std::vector<char*> fields(10, untouched);
    std::string text = row.text;
    EXPECT_EQ(str_split(text.data(), fields.data(), row.slots, row.separators), row.count);
    for (std::size_t index = 0; index < fields.size(); ++index) {
        const char* expected = index < row.stored.size() ? row.stored[index] : untouched;
        EXPECT_STREQ(fields[index], expected) << "field " << index;
    }
}

TEST(str_split, keeps_empty_fields_when_splitting_at_one_character)
{
    const split_row rows[] = {
        {"a version", "0.02.001", ".", 3, 3, {"0", "02", "001"}},
        {"more fields than slots", "a.b.c.d", ".", 3, 4, {"a", "b", "c.d"}},
        {"many more fields than slots", "a.b.c.d.", ".", 2, 5, {"a", "b.c.d."}},
        {"one slot", "a.b", ".", 1, 2, {"a.b"}},
        {"fewer fields than slots", "a.b", ".", 4, 2, {"a", "b"}},
        {"two in a row", "a..b", ".", 4, 3, {"a", "", "b"}},
        {"at both ends", ".a.", ".", 4, 3, {"", "a", ""}},
        {"nothing but one", ".", ".", 4, 2, {"", ""}},
        {"none", "abc", ".", 4, 1, {"abc"}},
        {"an empty text", "", ".", 4, 0, {}},
        {"tabs, with blanks kept", " a\t\t b ", "\t", 4, 3, {" a", "", " b "}},
        {"an ended last field when all fit", "a~b~c", "~", 3, 3, {"a", "b", "c"}},
    };
    for (const auto& row : rows)
        expect_split(row);
}

TEST(str_split, collapses_runs_when_splitting_at_several_characters)
{
    const split_row rows[] = {
        {"either of two", "a,b;c", ",;", 4, 3, {"a", "b", "c"}},
        {"a mixed run", "a,;,b", ",;", 4, 2, {"a", "b"}},
        {"a leading run ends an empty field", ",,a", ",;", 4, 2, {"", "a"}},
        {"a trailing run begins an empty field", "a,;", ",;", 4, 2, {"a", ""}},
        {"any of three", "a,;.b.c", ",;.", 4, 3, {"a", "b", "c"}},
        {"more fields than slots", "a,,b,;c,", ",;", 2, 4, {"a", "b,;c,"}},
        {"an empty text", "", ",;", 4, 0, {}},
    };
    for (const auto& row : rows)
        expect_split(row);
}

TEST(str_split, splits_words_without_separators)
{
    const split_row rows[] = {
        {"words", "one two", "", 4, 2, {"one", "two"}},
        {"no other white space", "one\ntwo\rthree", "", 4, 1, {"one\ntwo\rthree"}},
        {"runs of blanks and tabs", "one \t two", "", 4, 2, {"one", "two"}},
        {"white space at both ends", " \tone two \t", "", 4, 2, {"one", "two"}},
        {"a trailing blank behind the last slot", "one two ", "", 2, 2, {"one", "two"}},
        {"more words than slots", " one two  three ", "", 2, 3, {"one", "two  three "}},
        {"an empty text", "", "", 4, 0, {}},
        {"nothing but white space", " \t ", "", 4, 0, {}},
    };
    for (const auto& row : rows)
        expect_split(row);
}

TEST(strip_trailing_slash, removes_only_one_slash)
{
    const struct {
        const char* text;
        const char* expected;
    } rows[] = {{"logs//", "logs/"}, {"logs/", "logs"}, {"/logs", "/logs"}, {"/", ""}, {"", ""}};
    for (const auto& row : rows) {
        std::string text = row.text;
        EXPECT_EQ(strip_trailing_slash(text.data()), text.data());
        EXPECT_STREQ(text.c_str(), row.expected) << row.text;
    }
}

} // namespace
