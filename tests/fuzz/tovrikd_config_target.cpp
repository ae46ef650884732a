// tovrikd_config_target.cpp - any text is a configuration of tovrikd or has mistakes that can be
// told; one that is good keeps what the server relies on.
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"
#include "server/tovrikd/configuration_limits.hpp"
#include "server/tovrikd/configuration_read.hpp"

#include <algorithm>
#include <set>

namespace
{

const std::string path = "/folder/f.toml";

bool has_control(const std::string& text)
{
    return std::ranges::any_of(text,
                               [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; });
}

void check_mistakes(const std::vector<std::string>& mistakes)
{
    require(mistakes.size() <= tovrik::max_told_mistakes + 1, "mistakes have a bound");
    for (const std::string& mistake : mistakes) {
        require(mistake.starts_with(path + ":"), "a mistake names its file");
        require(!has_control(mistake), "a mistake is one line that can be shown");
    }
}

void check_name(const std::string& name, std::set<std::string>& known)
{
    require(!name.empty() && name.size() <= std::size_t{tovrik::max_name_bytes} &&
                !has_control(name),
            "a name can be shown");
    require(known.insert(name).second, "no two names are equal");
}

void check_configuration(const tovrik::configuration& made)
{
    std::set<std::string> inputs;
    std::set<std::string> channels;
    std::set<std::uint16_t> ports = {made.port};
    for (const auto& input : made.inputs) {
        check_name(input.name, inputs);
        for (const auto& range : input.allow)
            require((range.address & ~range.mask) == 0, "a range has no bits beside its mask");
    }
    for (const auto& channel : made.channels) {
        check_name(channel.name, channels);
        require(channel.port == 0 || ports.insert(channel.port).second, "every port is another");
    }
    require(made.mail.at_minute < 24 * 60, "a minute is one of a day");
    require(!made.services.mailing || !made.mail.from.empty(), "mailing has a sender");
    require(made.state_directory.starts_with('/'), "a folder is named in full");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text = fuzz_input{data, size}.rest();
    const auto result = tovrik::configuration_read_text(text, path);
    check_mistakes(result.mistakes);
    if (result.mistakes.empty())
        check_configuration(result.made);
    return 0;
}
