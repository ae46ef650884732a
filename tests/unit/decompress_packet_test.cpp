// decompress_packet_test.cpp - what fits into four times the hint, and how the rest is reported.
#include "net/decompression.hpp"

#include "support/compressed.hpp"
#include "unit/headless_screen.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using byte_vector = std::vector<unsigned char>;

class decompressing : public testing::Test
{
protected:
    void expect_refusal(const byte_vector& bytes, std::uint32_t size_hint,
                        const char* message) const
    {
        const std::size_t bells = screen.bells();
        EXPECT_FALSE(decompress_packet(bytes.data(), size_hint, bytes.size()));
        EXPECT_EQ(screen.status_text(), message);
        EXPECT_EQ(screen.pair_at(app_state.status_pane, 4, 1), 5);
        EXPECT_TRUE(screen.is_bold_at(app_state.status_pane, 4, 1));
        EXPECT_EQ(screen.bells(), bells + 1);
    }

    headless_screen screen;
};

TEST_F(decompressing, restores_texts_that_fit_into_four_times_the_hint)
{
    for (const std::size_t length : {0U, 1U, 397U, 399U, 400U}) {
        const std::string text(length, 'c');
        const byte_vector bytes = compressed_bytes(text);
        const heap_bytes result = decompress_packet(bytes.data(), 100, bytes.size());
        ASSERT_TRUE(result) << length;
        EXPECT_STREQ(reinterpret_cast<const char*>(result.get()), text.c_str());
    }
    EXPECT_EQ(screen.status_text(), "");
    EXPECT_EQ(screen.bells(), 0U);
}

TEST_F(decompressing, reports_a_text_longer_than_four_times_the_hint)
{
    const byte_vector bytes = compressed_bytes(std::string(401, 'c'));
    expect_refusal(bytes, 100, "Unable to decompress binary paket. Err: -5");
}

TEST_F(decompressing, reports_data_that_is_broken)
{
    byte_vector bytes = compressed_bytes("some text to be broken on the way");
    expect_refusal({'n', 'o', 't', ' ', 'z', 'l', 'i', 'b'}, 100,
                   "Unable to decompress binary paket. Err: -3");
    bytes.back() ^= 1;
    expect_refusal(bytes, 100, "Unable to decompress binary paket. Err: -3");
}

TEST_F(decompressing, reports_data_that_is_cut_off_or_missing)
{
    byte_vector bytes = compressed_bytes("some text to be cut off on the way");
    bytes.resize(bytes.size() / 2);
    for (const byte_vector& cut : {bytes, byte_vector{}}) {
        EXPECT_FALSE(decompress_packet(cut.data(), 100, cut.size()));
        EXPECT_TRUE(screen.status_text().starts_with("Unable to decompress binary paket. Err: -"));
    }
    EXPECT_EQ(screen.bells(), 2U);
}

TEST_F(decompressing, reports_any_text_for_a_hint_of_0)
{
    const byte_vector bytes = compressed_bytes("text");
    EXPECT_FALSE(decompress_packet(bytes.data(), 0, bytes.size()));
    EXPECT_TRUE(screen.status_text().starts_with("Unable to decompress binary paket. Err: -"));
    EXPECT_EQ(screen.bells(), 1U);
}

} // namespace
