// xml_bound_test.cpp - what a document may take at most, whatever its text holds.
#include "data/xml.hpp"

#include "support/config_text.hpp"
#include "unit/net_fixture.hpp"

#include <cerrno>
#include <fstream>
#include <gtest/gtest.h>
#include <malloc.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace
{

constexpr const char* declaration = "<?xml version=\"1.0\"?>";
constexpr std::size_t largest_inflated = 262'140; // of one packet

std::string repeat(std::string_view piece, std::size_t size)
{
    std::string text;
    while (text.size() + piece.size() <= size)
        text += piece;
    return text;
}

/// Opens elements until the path is full of one letter.
std::string make_full_path()
{
    return repeat("<" + std::string(63, 'a') + ">", 16UL * 65);
}

std::size_t count_nodes(const xml_node* document)
{
    std::size_t count = 0;
    for (const xml_node* node = document; node != nullptr; node = node->next)
        ++count;
    return count;
}

std::size_t memory_in_use()
{
    const struct mallinfo2 now = mallinfo2();
    return now.uordblks + now.hblkhd;
}

/// A document, and what became known while it was made.
struct made_document {
    explicit made_document(const std::string& text)
    {
        const std::size_t before = memory_in_use();
        errno = 0;
        document.reset(xml_parse(text.c_str()));
        is_cut = errno == ENOMEM;
        memory = memory_in_use() - before;
    }

    xml_document document{};
    bool is_cut = false;
    std::size_t memory = 0;
};

TEST(xml_memory, never_exceeds_32_times_the_text_and_64_kib)
{
    static_assert(xml_memory_factor == 32 && xml_memory_base == 64UL * 1024);
    const std::string name(63, 'n');
    const std::string pieces[] = {"<>",
                                  "<a>",
                                  "</>",
                                  "<a/>",
                                  "<a>1",
                                  "<a></a>",
                                  "<>x",
                                  "<",
                                  ">",
                                  "<>>",
                                  "<" + name + ">",
                                  "</ab>",
                                  "<a><b>1</>",
                                  "<" + name + ">1</>",
                                  "x",
                                  "<a b>\n",
                                  "<>\n</a>>",
                                  "<" + name + "><></>"};
    for (const std::size_t size :
         std::initializer_list<std::size_t>{0, 500, 4'096, largest_inflated}) {
        for (const std::string& piece : pieces) {
            for (const std::string& start : {std::string{}, std::string{"<a>"}, make_full_path()}) {
                const std::string text = declaration + start + repeat(piece, size);
                const made_document made{text};
                ASSERT_LE(made.memory, 32 * text.size() + 64UL * 1024)
                    << size << " bytes of " << piece << " after " << start.size();
                ASSERT_NE(made.document, nullptr);
            }
        }
    }
}

TEST(xml_memory, ends_a_document_early_that_would_take_more)
{
    const std::string text = std::string{declaration} + "<a>" + repeat("<>", largest_inflated);
    const made_document made{text};
    EXPECT_TRUE(made.is_cut);
    const std::size_t count = count_nodes(made.document.get());
    EXPECT_GT(count, 1'000U);
    EXPECT_LT(count, 20'000U);
    std::string path = "a";
    const xml_node* node = made.document->next;
    for (int place = 0; place < 500; ++place, path += '/', node = node->next)
        ASSERT_EQ(node->path, path) << place;
}

TEST(xml_memory, goes_back_to_the_system)
{
    if (!CLIENT_IS_HARDENED)
        GTEST_SKIP() << "the sanitizers keep what is freed";
    const auto resident_pages = [] {
        std::ifstream figures{"/proc/self/statm"};
        std::size_t all = 0;
        std::size_t resident = 0;
        figures >> all >> resident;
        return resident;
    };
    const std::string text = std::string{declaration} + "<a>" + repeat("<>", largest_inflated);
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t before = resident_pages();
    xml_document document{xml_parse(text.c_str())};
    ASSERT_GT((resident_pages() - before) * page, 4'000'000U);
    // What is in use above it keeps the heap from shrinking by itself.
    const heap_text above{static_cast<char*>(std::malloc(100'000))};
    document.reset();
    EXPECT_LT(resident_pages() * page, before * page + 1'000'000);
}

TEST(xml_bounds, let_ordinary_documents_be_whole)
{
    client_settings many;
    for (int number = 10'000; number < 11'000; ++number)
        many.servers.push_back({.name = "server" + std::to_string(number) + ".example",
                                .alias = std::string(80, 'a'),
                                .info = "i"});
    const std::string texts[] = {
        transmission_xml(plain_elements + content_elements),
        transmission_xml(repeat("<a>" + std::string(500, 'x') + "</a>", largest_inflated)),
        transmission_xml(repeat("<el><inner>1</inner>\n</el>", largest_inflated)),
        transmission_xml(repeat("<a></a>", largest_inflated)),
        config_text({}),
        config_text(many),
    };
    for (const std::string& text : texts) {
        const made_document made{text};
        EXPECT_FALSE(made.is_cut) << text.substr(0, 200);
        std::size_t start_tags = 0;
        for (std::size_t at = text.find("?>"); (at = text.find('<', at + 1)) != std::string::npos;)
            start_tags += text[at + 1] == '/' ? 0 : 1;
        EXPECT_EQ(count_nodes(made.document.get()), start_tags + 2) << text.substr(0, 200);
    }
}

TEST(xml_bounds, end_a_document_with_too_many_end_tags_that_are_nearly_open)
{
    const std::string nearly = "</" + std::string(61, 'a') + "b>";
    const std::string few = declaration + make_full_path() + repeat(nearly, 2'000) + "<last>";
    EXPECT_FALSE(made_document{few}.is_cut);
    EXPECT_EQ(count_nodes(made_document{few}.document.get()), 18U);
    const std::string many =
        declaration + make_full_path() + repeat(nearly, largest_inflated) + "<last>";
    EXPECT_TRUE(made_document{many}.is_cut);
    EXPECT_EQ(count_nodes(made_document{many}.document.get()), 18U);
}

} // namespace
