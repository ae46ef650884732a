// network_session.cpp - what the tests of the network side share.
#include "e2e/network_session.hpp"

#include "support/compressed.hpp"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace
{

constexpr const char* aliases[] = {"alpha", "bravo", "charlie", "delta", "echo"};

/// "<name>text</name>", or nothing for an empty text.
std::string make_element(const std::string& name, const std::string& text)
{
    return text.empty() ? "" : "<" + name + ">" + text + "</" + name + ">";
}

bool is_number(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

} // namespace

listed_servers::listed_servers(int count)
{
    // Names are listed in descending order.
    for (int index = 0; index < count; ++index)
        servers.emplace_back("127.0.0." + std::to_string(9 - index));
}

client_settings listed_servers::settings() const
{
    client_settings settings;
    for (std::size_t index = 0; index < servers.size(); ++index)
        settings.servers.push_back({.name = "127.0.0." + std::to_string(9 - index),
                                    .port = std::to_string(servers[index].port()),
                                    .alias = alias_of(index)});
    return settings;
}

std::string alias_of(std::size_t index)
{
    return aliases[index];
}

testing::AssertionResult select_row(client_session& client, int number)
{
    for (int at = client.bar_row(); at != number; at += at < number ? 1 : -1)
        client.terminal().send_key(at < number ? named_key::down : named_key::up);
    return client.terminal().wait_until([&] { return client.bar_row() == number; },
                                        "the bar is on row " + std::to_string(number));
}

std::vector<server_connection> connect_all(client_session& client, listed_servers& servers)
{
    std::vector<server_connection> connections;
    for (std::size_t index = 0; index < servers.count(); ++index) {
        const testing::AssertionResult selected = select_row(client, static_cast<int>(index) + 1);
        EXPECT_TRUE(selected);
        std::optional<server_connection> connection = client.connect_selected(servers[index]);
        if (!selected || !connection)
            return connections;
        connections.push_back(std::move(*connection));
    }
    return connections;
}

testing::AssertionResult wait_for_last_status(client_session& client, std::string_view text)
{
    return client.terminal().wait_until([&] { return client.status_lines().back() == text; },
                                        "\"" + std::string{text} + "\" is the newest status line");
}

testing::AssertionResult wait_for_notice(client_session& client, server_connection& connection,
                                         std::string_view text)
{
    if (!connection.send(103, text))
        return testing::AssertionFailure() << "the client takes no bytes";
    return wait_for_last_status(client, text);
}

testing::AssertionResult stop_polls(client_session& client)
{
    client.clock().set_alarm_pace(0);
    // This poll replaces the alarm that was set at the old pace. Alarms that rang earlier have been
    // handled once the keys have taken effect.
    client.terminal().send_signal(SIGALRM);
    return client.wait_for_keys();
}

testing::AssertionResult poll_once(client_session& client)
{
    const std::int64_t before = client.clock().alarms_set();
    client.terminal().send_signal(SIGALRM);
    return client.terminal().wait_until([&] { return client.clock().alarms_set() > before; },
                                        "a poll");
}

process_facts facts_of(pid_t process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    const std::size_t end_of_name = line.rfind(')');
    if (end_of_name == std::string::npos)
        return {};
    process_facts facts;
    std::istringstream(line.substr(end_of_name + 1)) >> facts.state >> facts.parent;
    return facts;
}

bool has_heard(pid_t process, int signal_number)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/status");
    const std::uint64_t bit = std::uint64_t{1} << (signal_number - 1);
    int sets_without = 0;
    for (std::string line; std::getline(file, line);) {
        const std::string name = line.substr(0, line.find(':'));
        if (name == "SigPnd" || name == "ShdPnd" || name == "SigBlk")
            sets_without += (std::stoull(line.substr(name.size() + 1), nullptr, 16) & bit) == 0;
    }
    return sets_without == 3;
}

testing::AssertionResult wait_until_gone(terminal_session& terminal, pid_t process)
{
    return terminal.wait_until(
        [&] {
            const char state = facts_of(process).state;
            return state == ' ' || state == 'Z';
        },
        "process " + std::to_string(process) + " is gone");
}

std::vector<pid_t> children_of(pid_t process)
{
    std::vector<pid_t> children;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
        const std::string name = entry.path().filename();
        if (is_number(name) && facts_of(std::stoi(name)).parent == process)
            children.push_back(std::stoi(name));
    }
    return children;
}

server_packet capabilities_packet(std::string_view elements)
{
    return {.kind = 41,
            .payload = "<?xml version=\"1.0\"?><tovrik>" + std::string{elements} + "</tovrik>"};
}

std::string document_of(const acars_message& message)
{
    const std::string date =
        make_element("Day", message.day) + make_element("Month", message.month) +
        make_element("Year", message.year) + make_element("Hour", message.hour) +
        make_element("Minute", message.minute);
    const std::string acars =
        make_element("ACARSMode", message.mode) +
        make_element("AircraftReg", message.registration) +
        make_element("MessageLabel", message.label) + make_element("BlockID", message.block) +
        make_element("MessageNumber", message.number) +
        make_element("FlightNumber", message.flight) + make_element("MessageDate", date) +
        make_element("Authorized", make_element("MessageContent", message.content));
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" +
           make_element(
               "tovrik",
               make_element("ACARS", acars) +
                   make_element("Extended", make_element("Aircraft", message.aircraft) +
                                                make_element("Operator", message.operator_name)) +
                   make_element("FlightRouting", make_element("From", message.from) +
                                                     make_element("To", message.to)) +
                   make_element("Contacts", message.contacts) +
                   make_element("ContactData",
                                make_element("DailyFlights", message.daily_flights)));
}

std::vector<std::string> lines_of(const acars_message& message)
{
    std::vector<std::string> lines = {
        "ACARS mode: " + message.mode + "  Aircraft reg: " + message.registration + " [" +
            message.aircraft + "]",
        "Message label: " + message.label + " Block id: " + message.block +
            "  Message number: " + message.number,
        "Flight number: " + message.flight + "  Flight: " + message.from + "-" + message.to,
        "Operator: " + message.operator_name,
    };
    if (!message.content.empty()) {
        lines.emplace_back("Message content: -");
        std::istringstream content(message.content);
        for (std::string line; std::getline(content, line);)
            lines.push_back(line);
    }
    lines.push_back(std::string(49, '-') + "[ " + message.day + "/" + message.month + "/" +
                    message.year + " " + message.hour + ":" + message.minute + " ]-");
    return lines;
}

std::string text_of(const acars_message& message)
{
    std::string text;
    for (const std::string& line : lines_of(message))
        text += "\n" + line;
    return text;
}

server_packet plain_packet(std::string_view document)
{
    return {.kind = 40, .payload = std::string{document}};
}

server_packet compressed_packet(std::string_view document, int hint)
{
    const std::size_t room = document.size() / 4 + 1;
    return {.kind = 204,
            .payload = compressed(document),
            .extra = static_cast<std::uint16_t>(hint < 0 ? static_cast<int>(room) : hint)};
}

int message_bottom_row(client_session& client)
{
    return client.terminal().screen().rows() - 9;
}

testing::AssertionResult wait_for_message_rows(client_session& client,
                                               const std::vector<std::string>& lines, int below)
{
    const auto is_shown = [&] {
        const std::vector<std::string> rows = client.message_lines();
        const std::size_t last = static_cast<std::size_t>(message_bottom_row(client) - below);
        for (std::size_t at = 0; at < lines.size(); ++at) {
            const std::string& wanted = lines[lines.size() - 1 - at];
            if (at > last || rows[last - at] != (wanted.empty() ? "" : " " + wanted))
                return false;
        }
        return true;
    };
    std::string what = "the message pane ends with:";
    for (const std::string& line : lines)
        what += "\n    " + line;
    return client.terminal().wait_until(is_shown, what);
}

testing::AssertionResult wait_for_file(client_session& client, const std::string& name,
                                       const std::string& bytes)
{
    std::optional<std::string> found;
    testing::AssertionResult result = client.terminal().wait_until(
        [&] {
            found = client.home().read_file(name);
            return found == bytes;
        },
        name + " holds what it should");
    if (!result)
        result << "it holds:\n" << found.value_or("(no such file)") << "\nand not:\n" << bytes;
    return result;
}
