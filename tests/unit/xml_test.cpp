// xml_test.cpp - how the reader handles correct, wrong and over-long texts.
#include "data/xml.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

namespace
{

/// A node as a test writes it; "-" stands for null.
struct expected_node {
    std::string path, name, value;
    bool operator==(const expected_node&) const = default;
};

std::ostream& operator<<(std::ostream& out, const expected_node& node)
{
    return out << "{" << node.path << " | " << node.name << " | " << node.value << "}";
}

std::string text_or_dash(const char* text)
{
    return text == nullptr ? "-" : text;
}

std::vector<expected_node> parse_nodes(const std::string& text)
{
    const xml_document document(xml_parse(text.c_str()));
    std::vector<expected_node> nodes;
    for (const xml_node* node = document.get(); node != nullptr; node = node->next)
        nodes.push_back(
            {text_or_dash(node->path), text_or_dash(node->name), text_or_dash(node->value)});
    return nodes;
}

std::string get_by_name(const xml_document& document, const char* key)
{
    const heap_text value(xml_get(document.get(), key, true, false));
    return text_or_dash(value.get());
}

std::string get_by_path(const xml_document& document, const char* key)
{
    return text_or_dash(xml_get(document.get(), key, false, false));
}

const expected_node nameless = {"-", "-", "-"};
const expected_node pseudo = {"", "", "-"};

TEST(xml_parse, reads_nothing_without_a_declaration)
{
    for (const char* text : {"", "x", "?", "<a>1</a>", "<?xml ? ><a>1</a>", "?<a>>1</a>"})
        EXPECT_EQ(parse_nodes(text), std::vector{nameless}) << text;
}

TEST(xml_parse, follows_its_fixed_rules)
{
    const struct {
        const char* behaviour;
        const char* text;
        std::vector<expected_node> nodes;
    } rows[] = {
        {"the shortest document", "?><a>1</a>", {pseudo, {"a", "a", "1"}, nameless}},
        {"nothing behind the declaration", "<?xml?>", {pseudo}},
        {"text behind the declaration, but no tag", "?>text", {pseudo}},
        {"text behind the declaration belongs to the first node",
         "<?xml version=\"1.0\"?>\n<a>1</a>",
         {{"", "", "\n"}, {"a", "a", "1"}, nameless}},
        {"the first declaration counts and the second is an element",
         "?><?b?><a>1</a>",
         {pseudo, {"?b?", "?b?", "-"}, {"?b?/a", "a", "1"}, nameless}},
        {"everything before the declaration's end is skipped",
         "<x>0</x><y ?><a>1</a>",
         {pseudo, {"a", "a", "1"}, nameless}},
        {"an element keeps the text before its first child only",
         "?><a>\n  <b>1</b> lost <c>2</c> lost </a>",
         {pseudo, {"a", "a", "\n  "}, {"a/b", "b", "1"}, {"a/c", "c", "2"}, nameless}},
        {"an element without text has none",
         "?><a></a><b> </b>",
         {pseudo, {"a", "a", "-"}, {"b", "b", " "}, nameless}},
        {"attributes are dropped at the first blank",
         "?><clientconf version=\"1.02\" x='y'>t</clientconf >",
         {pseudo, {"clientconf", "clientconf", "t"}, nameless}},
        {"an attribute holds no < of its own",
         "?><a x=\"<b\">1</a>",
         {pseudo, {"b\"", "b\"", "1"}, nameless}},
        {"an attribute holds no > of its own",
         "?><a x=\">\">1</a>",
         {pseudo, {"a", "a", "\"1"}, nameless}},
        {"a tab or a line end stays in the name",
         "?><a\tb>1</a><c\nd e>2</c>",
         {pseudo, {"a\tb", "a\tb", "1"}, {"c\nd", "c\nd", "2"}, nameless}},
        {"a leading blank leaves an empty name", "?>< a>1</a>", {pseudo, {"", "", "1"}, nameless}},
        {"references are not decoded",
         "?><a>&lt;&#65;&amp;</a>",
         {pseudo, {"a", "a", "&lt;&#65;&amp;"}, nameless}},
        {"a comment opens an element that nothing closes",
         "?><a><!-- note --><b>1</b></a><c>2</c>",
         {pseudo,
          {"a", "a", "-"},
          {"a/!--", "!--", "-"},
          {"a/!--/b", "b", "1"},
          {"c", "c", "2"},
          nameless}},
        {"so does an instruction, a document type and CDATA",
         "?><?p q?><!DOCTYPE a><![CDATA[x]]><a>1</a>",
         {pseudo,
          {"?p", "?p", "-"},
          {"?p/!DOCTYPE", "!DOCTYPE", "-"},
          {"?p/!DOCTYPE/![CDATA[x]]", "![CDATA[x]]", "-"},
          {"?p/!DOCTYPE/![CDATA[x]]/a", "a", "1"},
          nameless}},
        {"an empty-element tag is never closed",
         "?><r><a/><b>1</b></r>",
         {pseudo, {"r", "r", "-"}, {"r/a/", "a/", "-"}, {"r/a//b", "b", "1"}, nameless}},
        {"with a blank its slash is an attribute, and it is not closed either",
         "?><r><a /><b>1</b></r>",
         {pseudo, {"r", "r", "-"}, {"r/a", "a", "-"}, {"r/a/b", "b", "1"}, nameless}},
        {"an end tag cuts the path where its name first occurs",
         "?><clientconf><conf>1</conf><x>2</x>",
         {pseudo,
          {"clientconf", "clientconf", "-"},
          {"clientconf/conf", "conf", "1"},
          {"client/x", "x", "2"},
          nameless}},
        {"an end tag takes the slash before its name along",
         "?><a><b><c>1</b><d>2</d>",
         {pseudo,
          {"a", "a", "-"},
          {"a/b", "b", "-"},
          {"a/b/c", "c", "1"},
          {"a/d", "d", "2"},
          nameless}},
        {"a misspelt end tag changes nothing",
         "?><a>1</A><b>2</b>",
         {pseudo, {"a", "a", "1"}, {"a/b", "b", "2"}, nameless}},
        {"an end tag without a name closes everything",
         "?><a><b>1</><c>2</c>",
         {pseudo, {"a", "a", "-"}, {"a/b", "b", "1"}, {"c", "c", "2"}, nameless}},
        {"an end tag drops what follows a blank",
         "?><a>1</a b><c>2</c>",
         {pseudo, {"a", "a", "1"}, {"c", "c", "2"}, nameless}},
        {"a stray > opens the last tag again and is not text",
         "?><a>1>2<b>3</b></a><c>4</c>",
         {pseudo, {"a", "a", "12"}, {"a/a/b", "b", "3"}, {"c", "c", "4"}, nameless}},
        {"each text is without the > of its own",
         "?><a>1>2</a>x>y<b>3>4>5</b>",
         {pseudo, {"a", "a", "12"}, {"b", "b", "345"}, nameless}},
        {"the next end tag drops an element opened again",
         "?><r><a>1>2</a><b>3</b>",
         {pseudo, {"r", "r", "-"}, {"r/a", "a", "12"}, {"r/b", "b", "3"}, nameless}},
        {"a stray > behind an end tag closes again",
         "?><a><b>1</b></a>><c>2</c>",
         {pseudo, {"a", "a", "-"}, {"a/b", "b", "1"}, {"c", "c", "2"}, nameless}},
        {"a stray > behind the declaration does nothing",
         "?>>x<a>1</a>",
         {{"", "", "x"}, {"a", "a", "1"}, nameless}},
        {"an empty tag inside another",
         "?><a><>1</a>",
         {pseudo, {"a", "a", "-"}, {"a/", "", "1"}, nameless}},
        {"a < inside a tag begins it anew", "?><a<b>1</b>", {pseudo, {"b", "b", "1"}, nameless}},
        {"text that no tag ends is lost",
         "?><a>1</a><b>2",
         {pseudo, {"a", "a", "1"}, {"b", "b", "-"}}},
        {"a tag that nothing ends is lost", "?><a>1</a><b", {pseudo, {"a", "a", "1"}, nameless}},
        {"a lone < at the end", "?><a>1<", {pseudo, {"a", "a", "1"}, nameless}},
        {"bytes are taken as they are",
         "?><\xE4>\r\n\t\x01\xFF</\xE4>",
         {pseudo, {"\xE4", "\xE4", "\r\n\t\x01\xFF"}, nameless}},
        {"elements of one name are kept apart and in order",
         "?><r><a>1</a><a>2</a></r>",
         {pseudo, {"r", "r", "-"}, {"r/a", "a", "1"}, {"r/a", "a", "2"}, nameless}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(parse_nodes(row.text), row.nodes) << row.behaviour;
}

TEST(xml_parse, reads_every_byte_but_the_brackets_as_text)
{
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '<' && byte != '>')
            bytes += static_cast<char>(byte);
    }
    for (std::size_t start = 0; start < 16; ++start) {
        const std::string text = bytes.substr(start) + bytes.substr(0, start);
        const std::vector<expected_node> expected = {
            pseudo, {"a", "a", text}, {"a/b", "b", "2"}, nameless};
        EXPECT_EQ(parse_nodes("?><a>" + text + "<b>2</b>"), expected) << start;
    }
}

const char configuration[] = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
                             "<clientconf version=\"1.02\">\n"
                             "    <ACARSLog>1</ACARSLog>\n"
                             "    <Server1>\n"
                             "        <ServerName>b.example</ServerName>\n"
                             "        <ServerAlias></ServerAlias>\n"
                             "    </Server1>\n"
                             "    <Server2>\n"
                             "        <ServerName>a.example</ServerName>\n"
                             "    </Server2>\n"
                             "</clientconf>\n";

TEST(xml_parse, reads_a_configuration_file)
{
    const std::vector<expected_node> expected = {
        {"", "", "\n"},
        {"clientconf", "clientconf", "\n    "},
        {"clientconf/ACARSLog", "ACARSLog", "1"},
        {"clientconf/Server1", "Server1", "\n        "},
        {"clientconf/Server1/ServerName", "ServerName", "b.example"},
        {"clientconf/Server1/ServerAlias", "ServerAlias", "-"},
        {"clientconf/Server2", "Server2", "\n        "},
        {"clientconf/Server2/ServerName", "ServerName", "a.example"},
        nameless,
    };
    EXPECT_EQ(parse_nodes(configuration), expected);
}

TEST(xml_parse, cuts_names_at_their_limit)
{
    for (const std::size_t length : {62U, 63U, 64U, 65U, 500U}) {
        const std::string name(length, 'n');
        const std::string kept = name.substr(0, 63);
        std::string text = "?><";
        text.append(name).append(">1</").append(name).append("><b>2</b>");
        const std::vector<expected_node> expected = {
            pseudo, {kept, kept, "1"}, {"b", "b", "2"}, nameless};
        EXPECT_EQ(parse_nodes(text), expected) << length;
    }
}

TEST(xml_parse, counts_attributes_without_a_limit)
{
    const std::string text = "?><a x=\"" + std::string(5'000, 'y') + "\">1</a>";
    EXPECT_EQ(parse_nodes(text), (std::vector<expected_node>{pseudo, {"a", "a", "1"}, nameless}));
}

TEST(xml_parse, cuts_texts_at_their_limit)
{
    for (const std::size_t length : {510U, 511U, 512U, 513U, 100'000U}) {
        const std::string value(length, 'v');
        const std::vector<expected_node> expected = {
            pseudo, {"a", "a", value.substr(0, 511)}, {"b", "b", "2"}, nameless};
        EXPECT_EQ(parse_nodes("?><a>" + value + "</a><b>2</b>"), expected) << length;
    }
    const std::string pieces = "?><a>" + std::string(300, 'v') + ">" + std::string(300, 'w') + "<";
    EXPECT_EQ(parse_nodes(pieces)[1].value, std::string(300, 'v') + std::string(211, 'w'));
}

/// A text that opens elements until the path has `length` bytes, 41 for each level.
std::string make_nested_text(std::size_t length)
{
    std::string text = "?><" + std::string(40, 'r') + ">";
    for (std::size_t path = 40; path < length;) {
        const std::size_t name = std::min<std::size_t>(40, length - path - 1);
        text += "<" + std::string(name, 'n') + ">";
        path += 1 + name;
    }
    return text + "<";
}

TEST(xml_parse, cuts_paths_at_their_limit)
{
    for (const std::size_t length : {1022U, 1023U, 1024U, 1025U, 1064U, 3000U}) {
        const auto nodes = parse_nodes(make_nested_text(length));
        ASSERT_GE(nodes.size(), 3U);
        const expected_node& deepest = nodes[nodes.size() - 2];
        EXPECT_EQ(deepest.path.size(), std::min<std::size_t>(length, 1023)) << length;
        EXPECT_EQ(deepest.path.substr(0, 42), std::string(40, 'r') + "/n");
        EXPECT_NE(deepest.name, "-");
        EXPECT_EQ(nodes.back(), nameless);
    }
}

TEST(xml_parse, closes_a_path_that_was_cut)
{
    const std::string text = make_nested_text(3000) + "/" + std::string(40, 'r') + "><b>1</b>";
    const xml_document document(xml_parse(text.c_str()));
    EXPECT_EQ(get_by_path(document, "b"), "1");
}

TEST(xml_parse, takes_a_large_text)
{
    std::string text = "?><r>";
    for (int index = 0; index < 50'000; ++index)
        text += "<a>" + std::to_string(index) + "</a>";
    const xml_document document(xml_parse(text.c_str()));
    std::size_t count = 0;
    for (const xml_node* node = document.get(); node != nullptr; node = node->next)
        ++count;
    EXPECT_EQ(count, 50'003U);
}

TEST(xml_parse, keeps_elements_that_take_far_more_memory_than_the_text)
{
    constexpr std::size_t depth = 250;
    std::string text = "?>";
    for (std::size_t level = 0; level < depth; ++level)
        text += "<a>" + std::to_string(level);
    const auto nodes = parse_nodes(text + "<");
    ASSERT_EQ(nodes.size(), depth + 2);
    std::string path = "a";
    for (std::size_t level = 0; level < depth; ++level, path += "/a")
        ASSERT_EQ(nodes[level + 1], (expected_node{path, "a", std::to_string(level)})) << level;
}

TEST(xml_parse, keeps_names_that_the_path_holds_only_in_part)
{
    const std::string name(63, 'n');
    const auto nodes = parse_nodes(make_nested_text(1000) + "x><" + name + ">1<");
    const expected_node& deepest = nodes[nodes.size() - 2];
    EXPECT_EQ(deepest.name, name);
    EXPECT_EQ(deepest.path.size(), 1023U);
    EXPECT_TRUE(deepest.path.ends_with("/x/" + name.substr(0, 20))) << deepest.path;
    EXPECT_EQ(deepest.value, "1");
}

TEST(xml_get, distinguishes_very_similar_texts)
{
    // Of the same length, with the same byte in the middle and at the end.
    const xml_document document(
        xml_parse("?><r><abcde>1</abcde><xbcde>2</xbcde><axcxe>3</axcxe></r>"));
    EXPECT_EQ(get_by_name(document, "abcde"), "1");
    EXPECT_EQ(get_by_name(document, "xbcde"), "2");
    EXPECT_EQ(get_by_name(document, "axcxe"), "3");
    EXPECT_EQ(get_by_name(document, "ybcde"), "-");
    EXPECT_EQ(get_by_path(document, "r/axcxe"), "3");
    EXPECT_EQ(get_by_path(document, "x/axcxe"), "-");
}

TEST(xml_get, finds_no_node_by_a_key_that_is_longer_than_any)
{
    const xml_document document(xml_parse("?><a>1</a>"));
    // One letter more than 16 bits can count.
    const std::string key(65537, 'a');
    EXPECT_EQ(get_by_name(document, key.c_str()), "-");
    EXPECT_EQ(get_by_path(document, key.c_str()), "-");
}

TEST(xml_get, looks_up_by_path_and_by_name)
{
    const xml_document document(xml_parse(configuration));
    EXPECT_EQ(get_by_path(document, "clientconf/Server2/ServerName"), "a.example");
    EXPECT_EQ(get_by_path(document, "clientconf/Server1/ServerAlias"), "-");
    EXPECT_EQ(get_by_path(document, "clientconf/server1/ServerName"), "-");
    EXPECT_EQ(get_by_path(document, "ServerName"), "-");
    EXPECT_EQ(get_by_name(document, "ServerName"), "b.example");
    EXPECT_EQ(get_by_name(document, "servername"), "-");
    EXPECT_EQ(get_by_name(document, "clientconf/ACARSLog"), "-");
    EXPECT_EQ(get_by_name(document, ""), "\n");
    EXPECT_EQ(get_by_path(document, ""), "\n");
}

TEST(xml_get, stops_at_the_first_match_even_without_a_value)
{
    const xml_document document(xml_parse("?><r><a></a><a>2</a><b><a>3</a></b></r>"));
    EXPECT_EQ(get_by_name(document, "a"), "-");
    EXPECT_EQ(get_by_path(document, "r/a"), "-");
    EXPECT_EQ(get_by_path(document, "r/b/a"), "3");
}

TEST(xml_get, finds_nothing_in_an_empty_document)
{
    const xml_document document(xml_parse(""));
    for (const bool by_name : {false, true}) {
        EXPECT_EQ(xml_get(document.get(), "a", by_name, true), nullptr);
        EXPECT_EQ(xml_get(document.get(), "", by_name, true), nullptr);
        EXPECT_EQ(xml_get(nullptr, "a", by_name, true), nullptr);
    }
}

TEST(xml_get, lends_by_path_and_copies_by_name_or_on_request)
{
    const xml_document document(xml_parse("?><a>1</a>"));
    const char* own = document->next->value;
    EXPECT_EQ(xml_get(document.get(), "a", false, false), own);
    const heap_text copies[] = {heap_text(xml_get(document.get(), "a", false, true)),
                                heap_text(xml_get(document.get(), "a", true, false)),
                                heap_text(xml_get(document.get(), "a", true, true))};
    for (const heap_text& copy : copies) {
        EXPECT_STREQ(copy.get(), "1");
        EXPECT_NE(copy.get(), own);
    }
}

TEST(xml_free, accepts_null)
{
    xml_free(nullptr);
}

} // namespace
