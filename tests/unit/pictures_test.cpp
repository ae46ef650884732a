// pictures_test.cpp - the pictures that README shows exist and are complete.
//
// PICTURES_FOLDER in the environment names another folder, with pictures of the same names.
#include "support/screen_svg.hpp"
#include "unit/document_text.hpp"

#include <cstdlib>
#include <expat.h>
#include <map>
#include <memory>

namespace
{

constexpr int rows = 30;
constexpr int columns = 100;
constexpr std::size_t max_bytes = 60'000;

/// What an XML reader finds in a picture.
struct seen_picture {
    std::string error{}; // empty: it is well-formed
    std::set<std::string> elements{};
    std::map<std::string, std::string> size{}; // the attributes of the root element
    std::set<std::string> attributes{};        // their names, for all elements
    std::string text{};
};

void on_element(void* user, const XML_Char* name, const XML_Char** attributes)
{
    auto& seen = *static_cast<seen_picture*>(user);
    for (; *attributes != nullptr; attributes += 2) {
        seen.attributes.insert(attributes[0]);
        if (seen.elements.empty())
            seen.size[attributes[0]] = attributes[1];
    }
    seen.elements.insert(name);
}

void on_text(void* user, const XML_Char* text, int length)
{
    static_cast<seen_picture*>(user)->text.append(text, static_cast<std::size_t>(length));
}

seen_picture read_picture(const std::string& text)
{
    seen_picture seen;
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser{
        XML_ParserCreate("UTF-8"), XML_ParserFree};
    XML_SetUserData(parser.get(), &seen);
    XML_SetStartElementHandler(parser.get(), on_element);
    XML_SetCharacterDataHandler(parser.get(), on_text);
    if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) != XML_STATUS_OK)
        seen.error = XML_ErrorString(XML_GetErrorCode(parser.get()));
    return seen;
}

std::string read_picture_text(const std::string& name)
{
    const char* folder = std::getenv("PICTURES_FOLDER");
    std::ifstream file{(folder != nullptr ? std::string{folder} : SOURCE_FOLDER "/docs/pictures") +
                       '/' + name + ".svg"};
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>{file}, {}};
}

std::set<std::string> find_names_in_readme()
{
    return matches_of(source_text("README.md"), R"(!\[[^\]]+\]\(docs/pictures/([a-z-]+)\.svg\))");
}

TEST(pictures, are_those_that_the_readme_shows)
{
    EXPECT_EQ(find_names_in_readme(), (std::set<std::string>{"information", "main", "pager-list",
                                                             "service-menu", "settings"}));
}

TEST(pictures, are_well_formed_and_of_a_whole_screen)
{
    for (const std::string& name : find_names_in_readme()) {
        SCOPED_TRACE(name);
        const std::string text = read_picture_text(name);
        EXPECT_LT(text.size(), max_bytes);
        seen_picture seen = read_picture(text);
        EXPECT_EQ(seen.error, "");
        EXPECT_NE(seen.text.find("30 rows of 100 columns"), std::string::npos);
        EXPECT_EQ(seen.size["width"], std::to_string(screen_svg_width(columns)));
        EXPECT_EQ(seen.size["height"], std::to_string(screen_svg_height(rows)));
    }
}

TEST(pictures, are_self_contained)
{
    const std::set<std::string> own_elements = {"svg",    "title", "desc", "rect",
                                                "circle", "path",  "text"};
    for (const std::string& name : find_names_in_readme()) {
        const seen_picture seen = read_picture(read_picture_text(name));
        EXPECT_EQ(seen.elements, own_elements) << name;
        EXPECT_FALSE(seen.attributes.contains("href")) << name;
        EXPECT_FALSE(seen.attributes.contains("style")) << name;
    }
}

TEST(pictures, show_what_their_names_say)
{
    const std::pair<const char*, const char*> words[] = {
        {"main", "ACARS mode: "},
        {"information", "ServerName:"},
        {"settings", "ncurses tovrik client - Settings"},
        {"service-menu", "Request pagerlist from Server"},
        {"pager-list", "Registr. Airp Flightno"},
    };
    for (const auto& [name, word] : words)
        EXPECT_NE(read_picture(read_picture_text(name)).text.find(word), std::string::npos) << name;
}

} // namespace
