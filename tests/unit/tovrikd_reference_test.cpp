// tovrikd_reference_test.cpp - files of values separated by commas become reference data.
#include "base/owners.hpp"
#include "server/protocol/packet.hpp"
#include "server/tovrikd/configuration_limits.hpp"
#include "server/tovrikd/csv_reader.hpp"
#include "server/tovrikd/reference_files.hpp"
#include "support/temp_home.hpp"

#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>
#include <vector>

namespace
{

namespace kind = tovrik::kind;
using texts = std::vector<std::string>;

/// A stream that holds a text.
class text_stream
{
public:
    explicit text_stream(std::string held) : text(std::move(held))
    {
        // An empty memory stream cannot be opened.
        stream.reset(text.empty() ? fopen("/dev/null", "r")
                                  : fmemopen(text.data(), text.size(), "r"));
    }
    std::FILE* get() const
    {
        return stream.get();
    }

private:
    std::string text;
    unique_file stream;
};

/// Every record of a text: its line, and its fields or what is wrong.
std::vector<std::pair<unsigned, texts>> records_of(const std::string& text,
                                                   std::size_t limit = 1000)
{
    const text_stream stream{text};
    tovrik::csv_reader reader{stream.get(), limit};
    std::vector<std::pair<unsigned, texts>> records;
    for (tovrik::csv_record record; reader.next(record);)
        records.emplace_back(record.line, record.error.empty() ? record.fields
                                                               : texts{"wrong: " + record.error});
    return records;
}

TEST(csv_records, have_quotes_and_line_ends_of_every_kind)
{
    using records = std::vector<std::pair<unsigned, texts>>;
    const struct {
        std::string text;
        records wanted;
    } rows[] = {
        {"", {}},
        {"\n\r\n\n", {}},
        {"a", {{1, {"a"}}}},
        {"a,b\nc,d\n", {{1, {"a", "b"}}, {2, {"c", "d"}}}},
        {"a,b\r\n\r\nc,d\r\n", {{1, {"a", "b"}}, {3, {"c", "d"}}}},
        {"\xEF\xBB\xBF"
         "a,b",
         {{1, {"a", "b"}}}},
        {",\n", {{1, {"", ""}}}},
        {"a,\n,b", {{1, {"a", ""}}, {2, {"", "b"}}}},
        {"\"a,b\",\"c\"\"d\"\n\"\",x", {{1, {"a,b", "c\"d"}}, {2, {"", "x"}}}},
        {"\"a\nb\r\nc\",d\ne", {{1, {"a\nb\nc", "d"}}, {4, {"e"}}}},
        {"\"a\"", {{1, {"a"}}}},
        {" \"a\",b\nc",
         {{1, {"wrong: there is a quote within a field that does not begin with one"}},
          {2, {"c"}}}},
        {"\"a\" ,b\nc", {{1, {"wrong: there is text after the end of a quote"}}, {2, {"c"}}}},
        {"x\ny,\"a\nb\n",
         {{1, {"x"}}, {2, {"wrong: a quote begins here or below and does not end"}}}},
        {"a\rb", {{1, {"a\rb"}}}},
        {std::string("a\0b", 3), {{1, {std::string("a\0b", 3)}}}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(records_of(row.text), row.wanted) << row.text;
}

TEST(csv_records, have_a_bound)
{
    using records = std::vector<std::pair<unsigned, texts>>;
    const texts wrong = {"wrong: this record is longer than 10 bytes"};
    EXPECT_EQ(records_of("12345,789\na", 10), (records{{1, {"12345", "789"}}, {2, {"a"}}}));
    EXPECT_EQ(records_of("12345,789012\na", 10), (records{{1, wrong}, {2, {"a"}}}));
    EXPECT_EQ(records_of("\"12345,789012\",x\na", 10), (records{{1, wrong}, {2, {"a"}}}));
}

class reference_file : public testing::Test
{
protected:
    /// Reads a text as a file of entries of a kind.
    tovrik::reference_files_result read(const std::string& text, std::uint32_t of_kind)
    {
        tovrik::reference_files_result result{
            tovrik::reference_data{tovrik::max_file_reference_entries}, {}};
        const text_stream stream{text};
        tovrik::reference_file_read(stream.get(), "f", of_kind, result);
        return result;
    }
    static texts fields_of(const tovrik::reference_files_result& result, std::uint32_t of_kind,
                           const std::string& name)
    {
        const auto* const found = result.entries.find(of_kind, name);
        return found == nullptr ? texts{} : found->fields;
    }
};

TEST_F(reference_file, adds_airlines_airports_and_aircraft)
{
    const auto airlines = read("LH,Lufthansa\nXQ,\"Sun, \"\"Express\"\"\"\n", kind::add_airline);
    EXPECT_EQ(airlines.complaints, texts{});
    EXPECT_EQ(fields_of(airlines, kind::add_airline, "LH"), (texts{"LH", "Lufthansa"}));
    EXPECT_EQ(fields_of(airlines, kind::add_airline, "XQ"), (texts{"XQ", "Sun, \"Express\""}));
    const auto airports = read("FRA,Frankfurt", kind::add_airport);
    EXPECT_EQ(fields_of(airports, kind::add_airport, "FRA"), (texts{"FRA", "Frankfurt"}));
    const auto aircraft = read("D-AIBC,Airbus,A319,A319-114,123,LH,DLH,,\n", kind::add_aircraft);
    EXPECT_EQ(aircraft.complaints, texts{});
    EXPECT_EQ(fields_of(aircraft, kind::add_aircraft, "D-AIBC"),
              (texts{"D-AIBC", "Airbus", "A319", "A319-114", "123", "LH", "DLH", "", ""}));
}

TEST_F(reference_file, takes_the_order_of_its_columns_from_a_first_line_with_names)
{
    const auto result = read("Type,operator_icao,whatever,REGISTRATION,model,manufacturer\n"
                             "A319-114,DLH,x,D-AIBC,A319,Airbus\n"
                             "A320-200,BAW,x,G-EUUA,A320\n",
                             kind::add_aircraft);
    EXPECT_EQ(result.complaints, texts{"f:3: there is no manufacturer"});
    EXPECT_EQ(fields_of(result, kind::add_aircraft, "D-AIBC"),
              (texts{"D-AIBC", "Airbus", "A319", "A319-114", "", "", "DLH", "", ""}));
    EXPECT_EQ(read("code\nLH\n", kind::add_airline).complaints,
              texts{"f:1: there is no column \"name\""});
    EXPECT_EQ(read("registration,x\n1,2\n", kind::add_aircraft).complaints,
              (texts{"f:1: there is no column \"manufacturer\"",
                     "f:1: there is no column \"model\"", "f:1: there is no column \"type\""}));
}

TEST_F(reference_file, leaves_out_rows_that_are_wrong_and_tells_them)
{
    const auto result =
        read("LH,Lufthansa\nXX\nYY,\n,Nobody\nZZ,a,b\n\"Q\"Q,x\n\nBA,British\n", kind::add_airline);
    EXPECT_EQ(result.complaints,
              (texts{"f:2: there must be 2 values, not 1", "f:3: there is no name",
                     "f:4: there is no code", "f:5: there must be 2 values, not 3",
                     "f:6: there is text after the end of a quote"}));
    EXPECT_EQ(result.entries.size(), 2U);
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += "x\n";
    const auto many = read(text, kind::add_airline);
    ASSERT_EQ(many.complaints.size(), 101U);
    EXPECT_EQ(many.complaints.back(), "f: there are 900 more mistakes");
}

TEST_F(reference_file, has_texts_in_the_form_that_clients_can_carry)
{
    const auto result = read("A1,M\xC3\xBCnchen\nA2,M\xFCnchen\nA3,\" two\n\tlines \"\nA4," +
                                 std::string(100, 'x') + "\nA5,a\x1b[31m\n",
                             kind::add_airport);
    EXPECT_EQ(result.complaints, texts{});
    const struct {
        const char* code;
        std::string name;
    } rows[] = {{"A1", "M\xFCnchen"},
                {"A2", "M\xFCnchen"},
                {"A3", "two  lines"},
                {"A4", std::string(64, 'x')},
                {"A5", "a [31m"}};
    for (const auto& row : rows)
        EXPECT_EQ(fields_of(result, kind::add_airport, row.code), (texts{row.code, row.name}));
}

TEST_F(reference_file, may_hold_more_than_clients_may_add)
{
    std::string text;
    for (int i = 0; i < 5000; ++i)
        text += "C" + std::to_string(i) + ",name\n";
    EXPECT_EQ(read(text, kind::add_airline).entries.size(), 5000U);

    tovrik::reference_files_result few{tovrik::reference_data{2}, {}};
    const text_stream stream{"A,a\nB,b\nC,c\nA,d\n"};
    tovrik::reference_file_read(stream.get(), "f", kind::add_airline, few);
    EXPECT_EQ(few.complaints, texts{"f:3: there are more entries than the server keeps"});
    EXPECT_EQ(fields_of(few, kind::add_airline, "A"), (texts{"A", "d"}));
}

TEST(reference_files, are_read_from_where_they_are_and_told_when_they_are_not_there)
{
    const temp_home home;
    home.write_file("l.csv", "LH,Lufthansa\n");
    home.write_file("p.csv", "FRA,Frankfurt\nXXX\n");
    const auto read = tovrik::reference_files_read(
        {.airlines = home.path_of("l.csv"), .airports = home.path_of("p.csv")});
    EXPECT_EQ(read.complaints, texts{home.path_of("p.csv") + ":2: there must be 2 values, not 1"});
    EXPECT_EQ(read.entries.size(), 2U);
    EXPECT_EQ(tovrik::reference_files_read({}).complaints, texts{});
    ASSERT_EQ(mkfifo(home.path_of("pipe").c_str(), 0600), 0);
    EXPECT_EQ(
        tovrik::reference_files_read({.airlines = home.path(),
                                      .aircraft = home.path_of("none"),
                                      .airports = home.path_of("pipe")})
            .complaints,
        (texts{home.path() + ": Is a directory", home.path_of("pipe") + ": not an ordinary file",
               home.path_of("none") + ": No such file or directory"}));
}

} // namespace
