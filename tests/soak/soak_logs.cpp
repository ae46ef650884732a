// soak_logs.cpp - see soak_logs.hpp.
#include "soak/soak_logs.hpp"

#include "soak/soak_traffic.hpp"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace
{

constexpr std::string_view record_start = "\nACARS mode: ";
constexpr std::string_view server_mark = "Aircraft reg: S";
constexpr std::size_t shown_bytes = 600;

int find_server(std::string_view record)
{
    const std::size_t place = record.find(server_mark);
    if (place == std::string_view::npos)
        return -1;
    return std::atoi(std::string{record.substr(place + server_mark.size(), 3)}.c_str());
}

} // namespace

testing::AssertionResult log_is_complete(const std::string& text, int server,
                                         std::int64_t transmissions)
{
    std::size_t place = 0;
    for (std::int64_t number = 0; number < transmissions; ++number) {
        const std::string wanted = transmission_text(server, number);
        if (text.compare(place, wanted.size(), wanted) != 0)
            return testing::AssertionFailure()
                   << "the log of server " << server << " does not go on with transmission "
                   << number << " of " << transmissions << " at byte " << place << " of "
                   << text.size() << ", but:\n"
                   << text.substr(place, shown_bytes);
        place += wanted.size();
    }
    if (place != text.size())
        return testing::AssertionFailure() << "the log of server " << server << " goes on after "
                                           << transmissions << " transmissions with:\n"
                                           << text.substr(place, shown_bytes);
    return testing::AssertionSuccess();
}

std::map<int, std::string> log_by_server(const std::string& text)
{
    std::map<int, std::string> logs;
    const std::string_view all = text;
    for (std::size_t place = 0; place < all.size();) {
        const std::size_t end = std::min(all.find(record_start, place + 1), all.size());
        const std::string_view record = all.substr(place, end - place);
        logs[record.starts_with(record_start) ? find_server(record) : -1] += record;
        place = end;
    }
    return logs;
}
