// configuration_read.cpp - see configuration_read.hpp.
#include "server/tovrikd/configuration_read.hpp"

#include "base/path.hpp"
#include "server/base/whole_file.hpp"
#include "server/tovrikd/configuration_limits.hpp"
#include "server/tovrikd/configuration_rules.hpp"
#include "server/tovrikd/configuration_tables.hpp"
#include "server/tovrikd/regular_file.hpp"

#include <exception>

namespace tovrik
{
namespace
{

configuration_result read_text(std::string_view text, const std::string& path)
{
    const toml_document document = toml_document_read(text);
    if (!document.error.empty())
        return {{}, mistake_lines(path, {{document.error_line, document.error}})};
    reading in{.folder = std::string{path_folder(path)}};
    configuration_result result;
    result.made = configuration_of(document.root, in);
    check_configuration_rules(result.made, document.root, in);
    result.mistakes = mistake_lines(path, std::move(in.mistakes));
    return result;
}

configuration_result read_file(const std::string& path)
{
    const regular_file file = regular_file_open(path);
    if (!file.error.empty())
        return {{}, {file.error}};
    const whole_file whole = read_whole_stream(file.stream.get(), path, max_configuration_bytes);
    return whole.error.empty() ? read_text(whole.text, path)
                               : configuration_result{{}, {whole.error}};
}

/// What `read` gives; what the library throws, such as out of memory, is a mistake.
template <typename Read> configuration_result read_without_throwing(Read read)
{
    try {
        return read();
    } catch (const std::exception& failure) {
        return {{}, {std::string{"cannot read the configuration: "} + failure.what()}};
    }
}

} // namespace

configuration_result configuration_read(const std::string& path)
{
    return read_without_throwing([&path] { return read_file(path); });
}

configuration_result configuration_read_text(std::string_view text, const std::string& path)
{
    return read_without_throwing([&] { return read_text(text, path); });
}

} // namespace tovrik
