// passwords.cpp - see passwords.hpp.
#include "server/tovrikd/passwords.hpp"

#include "server/base/text_fields.hpp"
#include "server/base/whole_file.hpp"
#include "server/tovrikd/configuration_limits.hpp"
#include "server/tovrikd/file_mistakes.hpp"
#include "server/tovrikd/regular_file.hpp"

#include <algorithm>
#include <cstddef>
#include <set>

namespace tovrik
{
namespace
{

constexpr std::size_t digest_length = 32;

bool is_digest(std::string_view text)
{
    return text.size() == digest_length &&
           text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// What is wrong with a line; nothing if all is well. `labels` are those of the lines before.
std::string check_line(std::string_view line, const std::set<std::string, std::less<>>& labels)
{
    const auto colon = line.find(':');
    if (colon == std::string_view::npos)
        return "this is not a label, a colon and a digest";
    const std::string_view label = line.substr(0, colon);
    if (!is_password_label(label))
        return "a label must have 1 to 40 printable characters of ASCII";
    if (!is_digest(line.substr(colon + 1)))
        return "a digest must have 32 digits, 0 to 9 and a to f";
    if (labels.contains(label))
        return "the label \"" + std::string{label} + "\" is there already";
    return {};
}

passwords_result read_lines(const std::string& path, std::string_view text)
{
    passwords_result result;
    std::vector<mistake> mistakes;
    std::set<std::string, std::less<>> labels;
    unsigned number = 0;
    for (const std::string_view line : split_fields(text, '\n')) {
        ++number;
        if (line.empty())
            continue;
        std::string wrong = check_line(line, labels);
        if (wrong.empty() && result.passwords.size() == max_passwords)
            wrong = "there are more than " + std::to_string(max_passwords) + " passwords";
        if (wrong.empty()) {
            const auto colon = line.find(':');
            labels.emplace(line.substr(0, colon));
            result.passwords.push_back(
                {std::string{line.substr(0, colon)}, std::string{line.substr(colon + 1)}});
        } else {
            mistakes.push_back({number, std::move(wrong)});
        }
    }
    result.mistakes = mistake_lines(path, std::move(mistakes));
    return result;
}

} // namespace

passwords_result passwords_read(const std::string& path)
{
    const regular_file file = regular_file_open(path);
    if (!file.error.empty())
        return {{}, {file.error}};
    if ((file.status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return {{}, {path + ": others than its owner may use it; chmod 600 changes that"}};
    const whole_file whole = read_whole_stream(file.stream.get(), path, max_configuration_bytes);
    return whole.error.empty() ? read_lines(path, whole.text) : passwords_result{{}, {whole.error}};
}

std::string password_label_of(const std::vector<password>& passwords, std::string_view digest)
{
    if (digest.size() != digest_length)
        return {};
    std::size_t found = passwords.size();
    for (std::size_t i = 0; i < passwords.size(); ++i) {
        // Kept from the optimiser, which could end the comparison early.
        volatile unsigned difference = 0;
        for (std::size_t k = 0; k < digest_length; ++k)
            difference = difference | static_cast<unsigned>(passwords[i].digest[k] ^ digest[k]);
        const std::size_t mask = std::size_t{0} - static_cast<std::size_t>(difference == 0);
        found = (found & ~mask) | (i & mask);
    }
    return found == passwords.size() ? std::string{} : passwords[found].label;
}

bool is_password_label(std::string_view label)
{
    return !label.empty() && label.size() <= max_label_bytes &&
           std::ranges::all_of(label, [](char c) { return c >= ' ' && c <= '~' && c != ':'; });
}

} // namespace tovrik
