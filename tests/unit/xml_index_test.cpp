// xml_index_test.cpp - the index gives the same answers as a walk through the document.
#include "data/xml_index.hpp"

#include <gtest/gtest.h>

#include <string>

namespace
{

TEST(xml_index, answers_like_a_look_up_by_path)
{
    const xml_document document(
        xml_parse("?>\n<r>0<b>1</b><a>2</a><b>3</b><c></c><c>4</c><a><b>5</b></a></r>"));
    const xml_index index = xml_index_build(document.get());
    const struct {
        const char* path;
        const char* value;
    } rows[] = {{"", "\n"},      {"r", "0"},       {"r/a", "2"},     {"r/b", "1"},
                {"r/a/b", "5"},  {"r/c", nullptr}, {"r/B", nullptr}, {"b", nullptr},
                {"r/", nullptr}, {"zzz", nullptr}};
    for (const auto& row : rows) {
        EXPECT_STREQ(xml_index_value(index, row.path), row.value) << row.path;
        EXPECT_STREQ(xml_get(document.get(), row.path, false, false), row.value) << row.path;
    }
}

TEST(xml_index, gives_the_first_of_many_elements_with_the_same_path)
{
    std::string text = "?><r>";
    for (int number = 0; number < 1000; ++number)
        text += "<a>" + std::to_string(number) + "</a><b>" + std::to_string(number) + "</b>";
    const xml_document document(xml_parse(text.c_str()));
    const xml_index index = xml_index_build(document.get());
    EXPECT_STREQ(xml_index_value(index, "r/a"), "0");
    EXPECT_STREQ(xml_index_value(index, "r/b"), "0");
}

TEST(xml_index, is_empty_without_elements)
{
    EXPECT_TRUE(xml_index_build(nullptr).empty());
    const xml_document document(xml_parse(""));
    const xml_index index = xml_index_build(document.get());
    EXPECT_TRUE(index.empty());
    EXPECT_EQ(xml_index_value(index, ""), nullptr);
}

} // namespace
