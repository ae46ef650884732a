// report_test.cpp - receiving a server's report: what is kept of it, and what is refused.
#include "unit/net_fixture.hpp"
#include "unit/report_replies.hpp"

#include "base/limits.hpp"
#include "support/compressed.hpp"
#include "support/temp_home.hpp"
#include "unit/held_memory.hpp"

#include <cstdlib>

namespace
{

const status_line refusal = {"Report refused, its announced size is out of bounds", 5};

status_line make_size_line(const std::string& size)
{
    return {"Now receiving ZOBE Style report. Size " + size + " bytes", 6};
}

class report : public net_test
{
protected:
    report() : entry(add_server("one.example")) {}

    void receive(std::string_view piece) const
    {
        report_piece(entry, reinterpret_cast<const unsigned char*>(piece.data()), piece.size());
    }

    void announce(const std::string& bytes, int size) const
    {
        report_header(entry, (std::to_string(bytes.size()) + '\t' + std::to_string(size)).c_str());
    }

    /// Makes the home the folder for reports.
    void offer_home() const
    {
        std::free(app_state.setting_texts[ReportPath]);
        app_state.setting_texts[ReportPath] = owned_text(home.path() + "/");
    }

    temp_home home;
    server_entry& entry;
};

struct header_case {
    const char* header;
    std::uint32_t total; // announced; only with is_prepared
    std::uint32_t size;
    bool is_prepared;
    bool is_refused = false;
};

TEST_F(report, announcements_are_read_as_decimal_numbers_within_bounds)
{
    for (const auto& [header, total, size, is_prepared, is_refused] :
         {header_case{"1000\t4000", 1000, 4000, true},
          {"4000", 0, 4000, false},
          {"1000\t", 1000, 0, true},
          {"\t4000", 0, 4000, true},
          {"  \t4000", 0, 4000, true},
          {"", 0, 0, false},
          {"\t", 0, 0, true},
          {"x\ty", 0, 0, true},
          {" 7a\t 8b\t9", 7, 8, true},
          {"268435456\t67108864", 268435456, 67108864, true},
          {"268435457\t1", 0, 0, false, true},
          {"1\t67108865", 0, 0, false, true},
          {"-1\t1", 0, 0, false, true},
          {"1\t-1", 0, 0, false, true},
          {"-1", 0, 0, false, true},
          {"4294967297\t1", 0, 0, false, true},
          {"1\t4294967297", 0, 0, false, true},
          {"99999999999999999999\t1", 0, 0, false, true},
          {"1\t-99999999999999999999", 0, 0, false, true}}) {
        SCOPED_TRACE(header);
        std::free(entry.report_buffer);
        entry.report_buffer = nullptr;
        entry.report_received = 77;
        mark();
        report_header(entry, header);
        EXPECT_EQ(said(),
                  (status_lines{is_refused ? refusal : make_size_line(std::to_string(size))}));
        EXPECT_EQ(beeps(), 0U);
        EXPECT_EQ(entry.report_buffer != nullptr, is_prepared);
        if (!is_refused) {
            EXPECT_EQ(entry.report_size, size);
        }
        if (is_prepared) {
            EXPECT_EQ(entry.report_total, total);
            EXPECT_EQ(entry.report_received, 0U);
        }
    }
}

TEST_F(report, is_complete_with_exactly_the_announced_bytes)
{
    report_header(entry, "1000\t4000");
    mark();
    for (int piece = 1; piece <= 9; ++piece) {
        receive(std::string(111, 'x'));
        EXPECT_EQ(entry.report_received, 111U * static_cast<unsigned>(piece));
    }
    EXPECT_EQ(said(), status_lines{});
    receive("x");
    EXPECT_EQ(said(), (status_lines{{"Unable to decompress binary paket. Err: -3", 5}}));
    EXPECT_EQ(beeps(), 1U);
    EXPECT_EQ(entry.report_buffer, nullptr);
}

TEST_F(report, drops_unannounced_pieces)
{
    receive("early");
    report_header(entry, "4000");
    receive("no total was given");
    EXPECT_EQ(entry.report_received, 0U);
    EXPECT_EQ(said(), (status_lines{make_size_line("4000")}));
}

TEST_F(report, a_size_alone_changes_the_size_of_an_incomplete_report)
{
    offer_home();
    const std::string bytes = compressed(std::string(400, 'x'));
    announce(bytes, 1);
    receive(bytes.substr(0, 3));
    report_header(entry, "100");
    EXPECT_EQ(entry.report_received, 3U);
    EXPECT_EQ(entry.report_total, bytes.size());
    type_ahead("saved.txt\n");
    receive(bytes.substr(3));
    EXPECT_EQ(home.read_file("saved.txt"), std::string(400, 'x'));
}

TEST_F(report, keeps_nothing_of_a_piece_beyond_the_total)
{
    report_header(entry, "10\t10");
    receive("123456789");
    mark();
    receive(std::string(4096, 'x'));
    EXPECT_EQ(said(), (status_lines{{"Unable to decompress binary paket. Err: -3", 5}}));
    EXPECT_EQ(entry.report_buffer, nullptr);
}

TEST_F(report, an_empty_piece_changes_nothing_while_more_are_expected)
{
    report_header(entry, "10\t10");
    receive("123");
    receive("");
    EXPECT_EQ(entry.report_received, 3U);
    EXPECT_NE(entry.report_buffer, nullptr);
}

TEST_F(report, a_new_announcement_frees_what_was_kept)
{
    constexpr std::size_t large = 100'000'000;
    const std::size_t before = held_memory();
    report_header(entry, "100000000\t10");
    receive(std::string(4096, 'x'));
    EXPECT_GE(held_memory(), is_held_memory_known ? before + large : 0);
    report_header(entry, "2000\t10");
    EXPECT_LT(held_memory(), before + large);
    EXPECT_EQ(entry.report_received, 0U);
    receive(std::string(1999, 'x'));
    const std::size_t with_one = held_memory();
    for (int count = 0; count < 1000; ++count)
        report_header(entry, "2000\t10");
    EXPECT_LT(held_memory(), with_one + std::size_t{1000} * 2000 / 2);
    report_header(entry, "5\t10");
    EXPECT_EQ(entry.report_total, 5U);
    EXPECT_EQ(entry.report_received, 0U);
}

TEST_F(report, a_refused_announcement_frees_what_was_kept)
{
    report_header(entry, "2000\t10");
    receive("123");
    report_header(entry, "-1\t10");
    EXPECT_EQ(entry.report_buffer, nullptr);
    receive("456");
    EXPECT_EQ(entry.report_buffer, nullptr);
}

struct saved_case {
    const char* what;
    std::string text;
    int size; // as announced
    std::string file;
};

TEST_F(report, is_saved_byte_for_byte_up_to_a_zero_byte)
{
    offer_home();
    for (const auto& [what, text, size, file] :
         {saved_case{"a short text", "one\r\ntwo\n\xff%s", 100, "one\r\ntwo\n\xff%s"},
          {"a text of all its room", std::string(400, 'x'), 100, std::string(400, 'x')},
          {"a zero byte", std::string{"one\0two", 7}, 100, "one"},
          {"no text", "", 1, ""},
          {"a large text", std::string(3'000'000, 'y'), 1'000'000, std::string(3'000'000, 'y')}}) {
        SCOPED_TRACE(what);
        const std::string bytes = compressed(text);
        announce(bytes, size);
        type_ahead("saved.txt\n");
        mark();
        receive(bytes);
        EXPECT_EQ(home.read_file("saved.txt"), file);
        EXPECT_EQ(
            said(),
            (status_lines{{"Report successfully saved as '" + home.path() + "/saved.txt'", 6}}));
        EXPECT_EQ(entry.report_buffer, nullptr);
        EXPECT_EQ(beeps(), 0U);
    }
}

TEST_F(report, is_not_inflated_beyond_four_times_its_size)
{
    const std::string bytes = compressed(std::string(401, 'x'));
    announce(bytes, 100);
    mark();
    receive(bytes);
    EXPECT_EQ(said(), (status_lines{{"Unable to decompress binary paket. Err: -5", 5}}));
    EXPECT_EQ(beeps(), 1U);
}

TEST_F(report, escape_discards_it)
{
    offer_home();
    const std::string bytes = compressed("text");
    announce(bytes, 100);
    type_ahead("saved.txt\033");
    mark();
    receive(bytes);
    EXPECT_EQ(home.files(), std::vector<std::string>{});
    EXPECT_EQ(said(), status_lines{});
}

TEST_F(report, a_name_that_cannot_be_opened_is_reported)
{
    offer_home();
    const std::string bytes = compressed("text");
    announce(bytes, 100);
    type_ahead("none/x\n");
    mark();
    receive(bytes);
    EXPECT_EQ(said(), (status_lines{{"Unable to save report as '" + home.path() + "/none/x'", 5}}));
    EXPECT_EQ(beeps(), 1U);
}

TEST_F(report, is_reported_as_saved_even_on_a_full_disk)
{
    std::free(app_state.setting_texts[ReportPath]);
    app_state.setting_texts[ReportPath] = owned_text("/dev/");
    const std::string bytes = compressed("text");
    announce(bytes, 100);
    type_ahead("full\n");
    mark();
    receive(bytes);
    EXPECT_EQ(said(), (status_lines{{"Report successfully saved as '/dev/full'", 6}}));
    EXPECT_EQ(beeps(), 0U);
}

TEST_F(report, belongs_to_its_own_server)
{
    server_entry& other = add_server("two.example");
    report_header(entry, "10\t10");
    report_header(other, "20\t20");
    receive("123");
    EXPECT_EQ(entry.report_received, 3U);
    EXPECT_EQ(other.report_received, 0U);
    EXPECT_EQ(other.report_total, 20U);
}

} // namespace
