// template_model_test.cpp - filling a template beside its model.
#include "models/template_model.hpp"
#include "models/xml_compare.hpp"

#include "data/template.hpp"
#include "data/text.hpp"
#include "data/xml.hpp"
#include "support/generated_cases.hpp"

#include <gtest/gtest.h>
#include <map>

namespace
{

/// Values by their paths.
using values = std::map<std::string, std::string>;

const std::vector<std::string> paths = {"",
                                        "a",
                                        "b",
                                        "a/b",
                                        "tovrik/ACARS/ACARSMode",
                                        "tovrik/ACARS",
                                        "c",
                                        "aa",
                                        "tovrik/From",
                                        "tovrik/To",
                                        "x\xE4",
                                        "A",
                                        "a b c"};

/// A path of the document, or one that it does not have.
std::string make_path(case_choices& choices)
{
    return choices.chance(8) ? choices.text("ab/ ", 3) : choices.pick(paths);
}

std::string make_piece(case_choices& choices)
{
    switch (choices.number(6)) {
    case 0:
        return "%";
    case 1:
        return choices.text("%ab/#", 6);
    case 2:
        return choices.text("ab c\n", 8);
    case 3:
        return choices.hostile_text(6);
    default:
        return '%' + make_path(choices) + '%';
    }
}

/// Texts and placeholders. Values may name placeholders too.
std::string make_pieces(case_choices& choices, std::size_t most)
{
    std::string made;
    for (std::size_t count = choices.number(most); count > 0; --count)
        made += make_piece(choices);
    return made;
}

/// A value as it may be in an element: without brackets, and not too long for the reader.
std::string make_value(case_choices& choices)
{
    std::string made = choices.chance(75) ? choices.text("abc 12%", 6) : make_pieces(choices, 4);
    // Long values that name themselves or each other reach the bounds.
    if (choices.chance(1))
        made += make_pieces(choices, 60) + std::string(choices.number(400), 'x');
    std::erase_if(made, [](char byte) { return byte == '<' || byte == '>'; });
    return made.substr(0, 500);
}

/// A document in which every element stands at the root. The empty path is that of the declaration.
std::string make_document(const values& all)
{
    const auto declared = all.find("");
    std::string made = "<?xml?>" + (declared != all.end() ? declared->second : "");
    for (const auto& [path, value] : all) {
        if (!path.empty())
            made.append("<")
                .append(path)
                .append(">")
                .append(value)
                .append("</")
                .append(path)
                .append(">");
    }
    return made + '<';
}

std::string make_plain_value(case_choices& choices)
{
    return choices.text("abc 12", 20);
}

values make_values(case_choices& choices, std::string (*make)(case_choices&))
{
    values made;
    for (std::size_t count = choices.number(6); count > 0; --count) {
        const std::string path = choices.pick(paths);
        if (path.find(' ') == std::string::npos)
            made[path] = make(choices);
    }
    return made;
}

/// So long that a value of a few bytes makes the difference to the bound.
std::string make_long_template(case_choices& choices)
{
    const std::string filling(template_model_bytes - choices.number(20), 'x');
    return filling + '%' + make_path(choices) + '%';
}

TEST(template_model, fills_the_same)
{
    run_generated_cases([](case_choices& choices) {
        const bool is_long = choices.chance(2);
        const values all = make_values(choices, is_long ? make_plain_value : make_value);
        const std::string text = is_long ? make_long_template(choices) : make_pieces(choices, 12);
        const xml_document document{xml_parse(make_document(all).c_str())};
        const heap_text made{fill_template(str_dup(text.c_str()), document.get())};
        const auto value_at = [&all](const std::string& path) {
            const auto found = all.find(path);
            return found != all.end() ? found->second : "";
        };
        ASSERT_NE(made, nullptr);
        const std::size_t nodes = xml_model_copy(document.get()).size();
        EXPECT_EQ(std::string{made.get()}, template_model_fill(text, nodes, value_at))
            << testing::PrintToString(text) << "\nof " << testing::PrintToString(all);
    });
}

} // namespace
