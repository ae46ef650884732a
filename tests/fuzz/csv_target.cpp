// csv_target.cpp - records that are written by the rules come back as they were; any other text
// gives entries that clients can carry.
#include "base/owners.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"
#include "server/base/limits.hpp"
#include "server/base/text_fields.hpp"
#include "server/protocol/packet.hpp"
#include "server/tovrikd/configuration_limits.hpp"
#include "server/tovrikd/csv_reader.hpp"
#include "server/tovrikd/reference_files.hpp"

#include <algorithm>
#include <vector>

namespace
{

using records = std::vector<std::vector<std::string>>;

constexpr std::size_t any_length = 1U << 20;

unique_file open_text(std::string& text)
{
    // An empty text has no stream.
    text += '\n';
    return unique_file{fmemopen(text.data(), text.size(), "r")};
}

/// Records of texts without carriage returns, whose line ends are written in two ways.
records take_records(fuzz_input& input)
{
    records all;
    while (!input.is_empty() && all.size() < 100) {
        all.emplace_back();
        for (unsigned left = input.number(8) + 1; left > 0; --left) {
            std::string field = input.text();
            std::erase(field, '\r');
            all.back().push_back(std::move(field));
        }
    }
    return all;
}

std::string quote(const std::string& field)
{
    std::string quoted = "\"";
    for (const char c : field)
        quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

void check_written_records(fuzz_input input)
{
    const bool has_two_signs = input.flag();
    const records written = take_records(input);
    std::string text;
    for (const auto& fields : written) {
        for (std::size_t i = 0; i < fields.size(); ++i)
            text += (i == 0 ? "" : ",") + quote(fields[i]);
        text += has_two_signs ? "\r\n" : "\n";
    }
    const unique_file stream = open_text(text);
    tovrik::csv_reader reader{stream.get(), any_length};
    std::size_t count = 0;
    for (tovrik::csv_record record; reader.next(record); ++count) {
        require(record.error.empty(), "what is written by the rules is good");
        require(count < written.size() && record.fields == written[count],
                "a record comes back as it was");
    }
    require(count == written.size(), "every record comes back");
}

void check_any_text(std::string text, std::uint32_t kind)
{
    tovrik::reference_files_result result{tovrik::reference_data{100}, {}};
    const unique_file stream = open_text(text);
    tovrik::reference_file_read(stream.get(), "f", kind, result);
    require(result.entries.size() <= 100, "entries have a bound");
    require(result.complaints.size() <= tovrik::max_told_mistakes + 1, "complaints have a bound");
    for (const auto& entry : result.entries.entries()) {
        require(!entry.fields.front().empty(), "an entry has a name");
        require(std::ranges::all_of(entry.fields,
                                    [](const std::string& field) {
                                        return tovrik::is_clean_field(field,
                                                                      tovrik::max_field_bytes);
                                    }),
                "clients can carry every field");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    check_written_records({data, size});
    const std::string text = fuzz_input{data, size}.rest();
    check_any_text(text, tovrik::kind::add_airline);
    check_any_text(text, tovrik::kind::add_aircraft);
    return 0;
}
