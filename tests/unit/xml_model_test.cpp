// xml_model_test.cpp - the XML reader and its look-ups beside their model.
#include "models/xml_compare.hpp"
#include "support/config_text.hpp"
#include "support/generated_cases.hpp"

#include <cerrno>
#include <gtest/gtest.h>

/// Shows a node in the message of a failed test.
static void PrintTo(const xml_model_node& node, std::ostream* stream)
{
    for (const auto& field : {node.path, node.name, node.value})
        *stream << testing::PrintToString(field) << ' ';
}

namespace
{

/// A document's memory is bounded by its text's length. Far fewer elements than this reach it, so
/// the bound ends no generated document early.
constexpr std::size_t most_tags = 40;

const std::string spare_bytes = "<>/? ?>\n\t%a\xE4\x01\xFF";

const std::vector<std::string> names = {
    "a",       "b",        "ab",         "bb",     "Xerver1",   "aa",         "a/b",
    "/",       "",         "clientconf", "conf",   "client",    "ServerName", "Server",
    "Server1", "Server12", "Info",       "tovrik", "ACARS",     "A",          "!--",
    "a?",      "a\tb",     "a\n",        "b/",     "x\xE4\xFF", "![CDATA[a",  "MessageContent",
};

std::string make_name(case_choices& choices)
{
    if (choices.chance(6))
        return std::string(61 + choices.number(5), choices.pick<char>({'a', 'b'}));
    return choices.chance(4) ? choices.hostile_text(6) : choices.pick(names);
}

std::string make_text(case_choices& choices)
{
    switch (choices.number(7)) {
    case 0:
        return "\n    ";
    case 1:
        return choices.text("ab &;amp<=>?\"'/%", 8);
    case 2:
        return choices.hostile_text(12);
    case 3:
        return choices.chance(20) ? std::string(508 + choices.number(6), 'x') + "yz" : "x";
    case 4:
        return "&lt;&#65;";
    default:
        return choices.text("abc 12", 6);
    }
}

std::string make_attributes(case_choices& choices)
{
    if (choices.chance(80))
        return "";
    return choices.pick<std::string>({" ", " b", " version=\"1.02\"", "\tb=\"1\"", "  /", " a b"}) +
           (choices.chance(10) ? std::string(70, 'z') : "");
}

std::string make_declaration(case_choices& choices)
{
    if (choices.chance(70))
        return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";
    return choices.pick<std::string>({"?>", "", "?", "?\?>", "x?>", "<?xml?", "? >", "?>?>",
                                      "<a>?>", ">?>", "?<>", "<?xml?>x>", "<?xml?>x>y<"});
}

/// Elements inside each other, most of them closed and most of them in order.
std::string make_elements(case_choices& choices)
{
    std::string made;
    std::vector<std::string> open;
    const bool is_deep = choices.chance(10);
    for (std::size_t count = choices.number(most_tags / 2); count > 0; --count) {
        const bool is_start = open.empty() || choices.chance(is_deep ? 90 : 55);
        const std::string name = is_start ? make_name(choices) : open.back();
        if (is_start) {
            open.push_back(is_deep ? name + std::string(40, 'd') : name);
            made += '<' + open.back() + make_attributes(choices) + '>';
        } else {
            made += "</" + (choices.chance(85) ? name : make_name(choices)) + '>';
            open.pop_back();
        }
        if (choices.chance(60))
            made += make_text(choices);
    }
    while (!open.empty() && choices.chance(90)) {
        made += "</" + open.back() + '>';
        open.pop_back();
    }
    return made;
}

std::string make_document(case_choices& choices)
{
    std::string made;
    if (choices.chance(10))
        made = choices.text("<=>/? ab\n", most_tags);
    else if (choices.chance(5))
        made = config_text({.servers = {{.name = choices.hostile_text(10)}}});
    else
        made = make_declaration(choices) + make_elements(choices);
    return choices.chance(40) ? choices.damaged(made, spare_bytes) : made;
}

/// Every name and path of a document, and others that are like them.
std::vector<std::string> make_keys(case_choices& choices, const xml_model& document)
{
    std::vector<std::string> keys = {"", choices.pick(names), choices.hostile_text(4)};
    for (const xml_model_node& node : document) {
        for (const auto& field : {node.path, node.name}) {
            if (!field)
                continue;
            keys.push_back(*field);
            if (choices.chance(20))
                keys.push_back(choices.damaged(*field, spare_bytes));
        }
    }
    return keys;
}

TEST(xml_model, reads_and_finds_the_same)
{
    run_generated_cases([](case_choices& choices) {
        const std::string text = make_document(choices);
        errno = 0;
        const xml_document document{xml_parse(text.c_str())};
        const xml_model expected = xml_model_beside(document.get(), errno == ENOMEM, text);
        EXPECT_EQ(xml_model_copy(document.get()), expected);
        const xml_index index = xml_index_build(document.get());
        for (const std::string& key : make_keys(choices, expected))
            EXPECT_STREQ(xml_look_up_broken(document.get(), index, expected, key), nullptr)
                << testing::PrintToString(key);
        EXPECT_FALSE(testing::Test::HasFailure()) << testing::PrintToString(text);
    });
}

} // namespace
