// parser_memory_test.cpp - what the parsers of texts and packets guarantee when out of memory.
#include "unit/failing_memory.hpp"
#include "unit/net_fixture.hpp"

#include "data/text.hpp"
#include "data/xml.hpp"
#include "data/xml_index.hpp"
#include "net/decompression.hpp"
#include "net/directory_lines.hpp"
#include "net/packet_input.hpp"
#include "support/compressed.hpp"

#include <algorithm>
#include <optional>

namespace
{

using maybe_text = std::optional<std::string>;

maybe_text copy_text(const char* text)
{
    return text != nullptr ? maybe_text{text} : std::nullopt;
}

/// A document too long for one block of memory, with values, and with names longer than any path.
std::string make_long_document()
{
    std::string text = "<?xml version=\"1.0\"?><root>";
    for (int index = 0; index < 60; ++index) {
        const std::string name = "element" + std::to_string(index);
        text += "<" + name + ">" + std::string(20, 'v') + name + "</" + name + ">";
    }
    return text + "</root>";
}

struct path_value {
    std::string path;
    maybe_text value;

    bool operator==(const path_value&) const = default;
};
using path_values = std::vector<path_value>;

path_values collect_values(const xml_node* document)
{
    path_values values;
    for (const xml_node* node = document; node != nullptr && node->path != nullptr;
         node = node->next) {
        EXPECT_NE(node->name, nullptr);
        values.push_back({node->path, copy_text(node->value)});
    }
    return values;
}

TEST(xml_parse_out_of_memory, ends_the_list_early)
{
    const std::string text = make_long_document();
    const path_values whole = collect_values(xml_document{xml_parse(text.c_str())}.get());
    ASSERT_EQ(whole.size(), 62U);
    xml_document document;
    try_each_allocation({
        .prepare = [&] { document.reset(); },
        .call = [&] { document.reset(xml_parse(text.c_str())); },
        .expect_after_failure =
            [&](memory_failure, long nth) {
                EXPECT_EQ(document == nullptr, nth == 1);
                path_values values = collect_values(document.get());
                ASSERT_LT(values.size(), whole.size());
                path_values expected{whole.begin(), whole.begin() + std::ssize(values)};
                // The last element may lack its text.
                if (!values.empty() && !values.back().value)
                    expected.back().value.reset();
                EXPECT_EQ(values, expected);
            },
        .expect_success = [&] { EXPECT_EQ(collect_values(document.get()), whole); },
    });
}

TEST(xml_get_out_of_memory, gives_no_copy)
{
    const xml_document document{xml_parse("<?xml?><a><b>text</b></a>")};
    ASSERT_TRUE(document);
    for (const auto& [key, by_name] : {std::pair{"b", true}, {"a/b", false}}) {
        heap_text copy;
        try_each_allocation({
            .call = [&, wanted = key,
                     named = by_name] { copy.reset(xml_get(document.get(), wanted, named, true)); },
            .expect_after_failure = [&](memory_failure, long) { EXPECT_EQ(copy, nullptr); },
            .expect_success = [&] { EXPECT_STREQ(copy.get(), "text"); },
        });
    }
    const failing_memory none{memory_failure::from_then_on, 1};
    const std::string_view own_text = xml_get(document.get(), "a/b", false, false);
    const bool is_there = own_text == "text";
    EXPECT_TRUE(is_there);
}

TEST(xml_index_out_of_memory, gives_the_whole_index_or_none)
{
    const xml_document document{xml_parse(make_long_document().c_str())};
    xml_index whole = xml_index_build(document.get());
    ASSERT_EQ(whole.size(), 62U);
    xml_index index;
    try_each_allocation({
        .call = [&] { index = xml_index_build(document.get()); },
        .expect_after_failure =
            [&](memory_failure, long) {
                EXPECT_TRUE(index.empty() || index == whole);
                EXPECT_STREQ(xml_index_value(index, "root/none"), nullptr);
            },
        .expect_success = [&] { EXPECT_EQ(index, whole); },
    });
}

struct text_case {
    const char* what;
    const char* before; // null: none
    std::function<char*(char*)> change;
    const char* after;
};

TEST(text_out_of_memory, leaves_the_text_as_it_was)
{
    const text_case rows[] = {
        {"dup", nullptr, [](char*) { return str_dup("copy"); }, "copy"},
        {"append", "one", [](char* text) { return str_append(text, " two"); }, "one two"},
        {"append to none", nullptr, [](char* text) { return str_append(text, "two"); }, "two"},
        {"grow", "a.b.c", [](char* text) { return str_replace(text, ".", "--"); }, "a--b--c"},
        {"shrink", "a--b", [](char* text) { return str_replace(text, "--", "."); }, "a.b"},
        {"drop", "a--b", [](char* text) { return str_replace(text, "--", nullptr); }, "ab"},
    };
    for (const text_case& row : rows) {
        SCOPED_TRACE(row.what);
        heap_text text;
        const char* address = nullptr;
        try_each_allocation({
            .prepare =
                [&] {
                    text.reset(str_dup(row.before));
                    address = text.get();
                },
            .call = [&] { text.reset(row.change(text.release())); },
            .expect_after_failure =
                [&](memory_failure, long) {
                    EXPECT_EQ(text.get(), address);
                    EXPECT_STREQ(text.get(), row.before);
                },
            .expect_success = [&] { EXPECT_STREQ(text.get(), row.after); },
        });
    }
}

TEST(directory_entry_out_of_memory, leaves_out_single_texts_or_gives_no_entry)
{
    std::string line;
    std::unique_ptr<server_entry, releaser<server_entry_free>> entry;
    const auto texts = [&] {
        return std::vector<maybe_text>{copy_text(entry->ServerName), copy_text(entry->Location),
                                       copy_text(entry->Info), copy_text(entry->ServerAlias)};
    };
    const std::vector<maybe_text> whole = {"host", "place", "facts", "alias"};
    try_each_allocation({
        .prepare = [&] { line = "host\t2300\tc\tplace\tfacts\tf\talias\th\ti"; },
        .call = [&] { entry.reset(directory_entry_new(line.data())); },
        .expect_after_failure =
            [&](memory_failure failure, long nth) {
                ASSERT_EQ(entry == nullptr, nth == 1);
                if (!entry)
                    return;
                EXPECT_EQ(entry->ServerPort, 2300);
                std::vector<maybe_text> expected = whole;
                const auto first = expected.begin() + nth - 2;
                std::fill(first, failure == memory_failure::once ? first + 1 : expected.end(),
                          std::nullopt);
                EXPECT_EQ(texts(), expected);
            },
        .expect_success =
            [&] {
                ASSERT_TRUE(entry);
                EXPECT_EQ(texts(), whole);
            },
    });
}

class packets_out_of_memory : public net_test
{
};

TEST_F(packets_out_of_memory, inflates_nothing_and_says_nothing)
{
    const std::string text(300, 'c');
    const std::vector<unsigned char> bytes = compressed_bytes(text);
    heap_bytes inflated;
    mark();
    try_each_allocation({
        .call = [&] { inflated = decompress_packet(bytes.data(), 100, bytes.size()); },
        .expect_after_failure = [&](memory_failure, long) { EXPECT_EQ(inflated, nullptr); },
        .expect_success =
            [&] { EXPECT_STREQ(reinterpret_cast<char*>(inflated.get()), text.c_str()); },
    });
    EXPECT_EQ(said(), status_lines{});
    EXPECT_EQ(beeps(), 0U);
}

TEST_F(packets_out_of_memory, takes_nothing_of_a_packet_without_a_buffer)
{
    server_entry& entry = add_server("host.example");
    const server_end server = connect(entry);
    const std::string wire = wire_bytes({40, "text"});
    int result = 0;
    bool is_sent = false;
    try_each_allocation({
        .prepare =
            [&] {
                if (!std::exchange(is_sent, true))
                    server.send_bytes(wire);
            },
        .call = [&] { result = receive_packet(entry.socket_fd, entry); },
        .expect_after_failure =
            [&](memory_failure, long) {
                EXPECT_EQ(result, packet_failed);
                EXPECT_EQ(entry.rx_packet, nullptr);
                EXPECT_EQ(entry.bytes_received, 0U);
            },
        .expect_success =
            [&] {
                EXPECT_EQ(result, packet_complete);
                EXPECT_EQ(entry.bytes_received, wire.size());
                const received_packet packet = packet_take(entry);
                ASSERT_TRUE(packet);
                EXPECT_STREQ(reinterpret_cast<const char*>(packet->payload), "text");
                entry.bytes_received = 0;
                is_sent = false;
            },
    });
}

} // namespace
