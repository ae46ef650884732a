// protocol_document_test.cpp - the tables of docs/protocol.md and the code have the same packets.
#include "unit/document_text.hpp"

#include "base/limits.hpp"
#include "net/capability_table.hpp"

#include <algorithm>
#include <map>

namespace
{

using kind_rows = std::map<std::string, std::string>; // by number

const std::string& read_protocol()
{
    static const std::string text = source_text("docs/protocol.md");
    return text;
}

/// The table rows of a section that begin with a number.
kind_rows find_rows_below(const std::string& heading)
{
    kind_rows rows;
    const std::string section = text_between(read_protocol(), "\n## " + heading + "\n", "\n## ");
    for (const auto& row : all_matches(section, R"(\n\| (\d+) (\|[^\n]*))"))
        EXPECT_TRUE(rows.emplace(row[0], row[1]).second) << "twice: " << row[0];
    return rows;
}

std::set<std::string> collect_numbers(const kind_rows& rows)
{
    std::set<std::string> numbers;
    for (const auto& [number, row] : rows)
        numbers.insert(number);
    return numbers;
}

const kind_rows& read_sent_rows()
{
    static const kind_rows rows = find_rows_below("Kinds that the client sends");
    return rows;
}

const kind_rows& read_received_rows()
{
    static const kind_rows rows = find_rows_below("Kinds that the server sends");
    return rows;
}

/// What the client does about one kind of packet.
struct dispatch_row {
    std::string number;
    bool has_beeps;
    std::string message; // empty: none in the table
};

/// The rows of the client's table, with the replies that services/report handles.
std::vector<dispatch_row> read_dispatch_rows()
{
    std::map<std::string, std::string> numbers;
    for (const auto& name :
         all_matches(source_text("src/net/packet_kind.hpp"), R"((received_\w+) = (\d+),)"))
        numbers[name[0]] = name[1];
    std::map<std::string, std::vector<std::string>> replies; // "refuse" or not, and the text
    for (const auto& reply :
         all_matches(source_text("src/services/report.cpp"),
                     R"re(case (received_\w+):\s+return (\w+)\([^"]*"([^"]*)"\);)re"))
        replies[reply[0]] = {reply[1], reply[2]};
    const std::string table =
        text_between(source_text("src/net/packet_dispatch.cpp"), "packet_rules[] = {", "\n};");
    std::vector<dispatch_row> rows;
    for (const auto& row :
         all_matches(table, R"re(\{\.kind = (\w+)(,\s+\.beeps = \d+)?(?:,\s+\.pair = [\w:]+)?)re"
                            R"re((?:,\s+\.message = "([^"]*)")?)re")) {
        const auto reply = replies.find(row[0]);
        if (reply == replies.end())
            rows.push_back({numbers.at(row[0]), !row[1].empty(), row[2]});
        else
            rows.push_back({numbers.at(row[0]), reply->second[0] == "refuse", reply->second[1]});
    }
    return rows;
}

TEST(protocol_document, names_the_kinds_that_the_client_sends_and_no_others)
{
    const auto sent = matches_of(source_text("src/net/packet_kind.hpp"), R"(sent_\w+ = (\d+),)");
    EXPECT_EQ(collect_numbers(read_sent_rows()), sent);
}

TEST(protocol_document, names_the_kinds_that_the_client_acts_on_and_no_others)
{
    std::set<std::string> received;
    for (const auto& row : read_dispatch_rows())
        received.insert(row.number);
    EXPECT_EQ(collect_numbers(read_received_rows()), received);
}

TEST(protocol_document, gives_the_beeps_and_the_words_of_every_kind)
{
    for (const auto& row : read_dispatch_rows()) {
        const auto described = read_received_rows().find(row.number);
        ASSERT_NE(described, read_received_rows().end()) << row.number;
        const std::string& text = described->second;
        EXPECT_EQ(text.find("| beeps") != std::string::npos, row.has_beeps) << text;
        const std::string words = row.message.empty() ? "" : "says \"" + row.message + '"';
        EXPECT_NE(text.find(words), std::string::npos) << text;
    }
}

TEST(protocol_document, quotes_only_messages_that_the_client_shows)
{
    std::string code;
    for (const char* file :
         {"src/net/packet_dispatch.cpp", "src/net/connection_end.cpp", "src/services/report.cpp",
          "src/net/decompression.cpp", "src/net/transmission.cpp"})
        code += source_text(file);
    for (const std::string& words :
         matches_of(read_protocol(), R"re((?:say|says|words)\s"([^"]+)")re"))
        EXPECT_NE(code.find('"' + words + '"'), std::string::npos) << words;
}

TEST(protocol_document, knows_every_kind_of_the_practice_server_with_its_sender)
{
    const std::string code = source_text("server/protocol/packet.hpp");
    const std::string kind_line = R"(constexpr std::uint32_t \w+ = (\d+);)";
    const auto from_client =
        matches_of(text_between(code, "// From a client.\n", "// From either"), kind_line);
    const auto from_either =
        matches_of(text_between(code, "// From either", "// From the server.\n"), kind_line);
    const auto from_server =
        matches_of(text_between(code, "// From the server.\n", "} // namespace kind"), kind_line);
    for (const auto& kinds : {from_client, from_either})
        for (const std::string& kind : kinds)
            EXPECT_TRUE(read_sent_rows().contains(kind)) << kind;
    for (const auto& kinds : {from_server, from_either})
        for (const std::string& kind : kinds)
            EXPECT_TRUE(read_received_rows().contains(kind)) << kind;
}

TEST(protocol_document, names_the_refusals_of_every_service_of_the_practice_server)
{
    std::map<std::string, std::string> numbers;
    for (const auto& kind : all_matches(source_text("server/protocol/packet.hpp"),
                                        R"(constexpr std::uint32_t (\w+) = (\d+);)"))
        numbers[kind[0]] = kind[1];
    const std::string table = text_between(source_text("server/services/service_requests.cpp"),
                                           "service_requests[] = {", "\n};");
    const auto services = all_matches(table, R"(\{kind::(\w+), \w+,\s+kind::(\w+), \w+,\s+\w+\})");
    EXPECT_EQ(services.size(),
              static_cast<std::size_t>(std::count(table.begin(), table.end(), '{')));
    for (const auto& service : services) {
        const std::string& row = read_sent_rows().at(numbers.at(service[0]));
        const std::string answers = row.substr(row.find_last_of('|', row.size() - 2));
        EXPECT_TRUE(matches_of(answers, R"(\b(\d+)\b)").contains(numbers.at(service[1]))) << row;
    }
}

TEST(protocol_document, names_every_element_of_transmissions_and_capabilities)
{
    const auto shown =
        matches_of(source_text("src/data/template.cpp") + source_text("src/net/transmission.cpp"),
                   R"(tovrik/[A-Za-z/]+)");
    EXPECT_EQ(matches_of(read_protocol(), "`(tovrik/[A-Za-z/]+)`"), shown);
    const std::string section = text_between(read_protocol(), "\n## Capabilities\n", "\n## ");
    auto read = matches_of(source_text("src/net/capabilities.cpp"),
                           R"re(document(?:\.get\(\))?, "(\w+)")re");
    for (const capability& offer : capability_table)
        for (const char* element : offer.elements)
            if (element != nullptr)
                read.insert(element);
    EXPECT_EQ(matches_of(section, R"(\n\| `(\w+)` \|)"), read);
}

TEST(protocol_document, gives_the_bounds_of_the_code)
{
    static_assert(packet_header_bytes == 12 && packet_max_payload_bytes == 4096 &&
                  packet_max_sent_text_bytes == 4092 && packet_last_text_kind == 199 &&
                  decompression_factor == 4);
    for (const std::string& bound :
         {std::to_string(packet_max_sent_text_bytes), std::to_string(report_max_total_bytes),
          std::to_string(report_max_size), std::string{"100,000 servers"}, std::string{"16 MiB"}})
        EXPECT_NE(read_protocol().find(bound), std::string::npos) << bound;
    static_assert(max_servers == 100'000 && directory_max_bytes == 16UL << 20);
}

} // namespace
