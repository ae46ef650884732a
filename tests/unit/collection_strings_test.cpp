// collection_strings_test.cpp - collections of texts: order, ownership, writing to and reading
// from a stream.
#include "data/collection.hpp"

#include "base/owners.hpp"
#include "data/text.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace
{

using unique_collection = std::unique_ptr<collection, releaser<collection_destroy>>;

TEST(collection_strings, keeps_texts_in_byte_order_and_owns_them)
{
    const unique_collection strings(collection_new_strings(2, 2));
    for (const char* text : {"pear", "apple", "\xE4pfel", "Zebra", "fig"})
        EXPECT_EQ(strings->add(strings.get(), str_dup(text)), 1);
    const heap_text again(str_dup("fig"));
    EXPECT_EQ(strings->add(strings.get(), again.get()), 0);
    const char* expected[] = {"Zebra", "apple", "fig", "pear", "\xE4pfel"};
    ASSERT_EQ(strings->count, 5);
    for (std::int32_t index = 0; index < 5; ++index)
        EXPECT_STREQ(static_cast<const char*>(strings->items[index]), expected[index]);
    EXPECT_EQ(strings->index_of(strings.get(), "pear"), 3);
    EXPECT_EQ(strings->index_of(strings.get(), "plum"), -1);
}

TEST(collection_strings, reads_back_what_it_wrote)
{
    const unique_collection strings(collection_new_strings(1, 1));
    const unique_file stream(std::tmpfile());
    ASSERT_TRUE(stream);
    const std::string longest(4095, 'l');
    for (const char* text : {"first", "", "two\nlines", longest.c_str()})
        EXPECT_EQ(strings->write_item(stream.get(), text), 1);
    EXPECT_EQ(strings->write_item(stream.get(), (longest + "l").c_str()), 0);
    std::rewind(stream.get());
    for (const char* text : {"first", "", "two\nlines", longest.c_str()}) {
        const heap_text read(static_cast<char*>(strings->read_item(stream.get())));
        EXPECT_STREQ(read.get(), text);
    }
    EXPECT_EQ(strings->read_item(stream.get()), nullptr);
}

TEST(collection_strings, reads_no_text_that_is_cut_off_or_too_long)
{
    const unique_collection strings(collection_new_strings(1, 1));
    for (const std::size_t length : {3U, 4096U, 10'000U}) {
        const unique_file stream(std::tmpfile());
        ASSERT_TRUE(stream);
        const std::string text(length, 'x');
        ASSERT_EQ(std::fwrite(text.data(), 1, length, stream.get()), length);
        std::rewind(stream.get());
        EXPECT_EQ(strings->read_item(stream.get()), nullptr) << length;
    }
}

TEST(collection_strings, reports_a_stream_that_cannot_be_written)
{
    const unique_collection strings(collection_new_strings(1, 1));
    const unique_file stream(std::fopen("/dev/null", "r"));
    ASSERT_TRUE(stream);
    EXPECT_EQ(strings->write_item(stream.get(), "text"), 0);
}

} // namespace
