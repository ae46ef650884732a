// replay_file.cpp - see replay_file.hpp.
#include "server/practice/replay_file.hpp"

#include "server/base/limits.hpp"
#include "server/base/whole_file.hpp"

#include <utility>

namespace tovrik
{
namespace
{

constexpr std::string_view declaration_start = "<?xml";
constexpr std::string_view white_space = " \t\r\n";

/// The start of the first document at or after `position`, itself the start of a line; npos if
/// there is none.
std::size_t find_document(std::string_view text, std::size_t position)
{
    while (position < text.size() && !text.substr(position).starts_with(declaration_start)) {
        const auto line_end = text.find('\n', position);
        if (line_end == std::string_view::npos)
            return line_end;
        position = line_end + 1;
    }
    return position < text.size() ? position : std::string_view::npos;
}

std::string check_document(std::string_view document, std::size_t number)
{
    const std::string which = "document " + std::to_string(number) + " ";
    if (document.size() > max_text_bytes)
        return which + "has more than " + std::to_string(max_text_bytes) + " bytes";
    if (document.find('\0') != std::string_view::npos)
        return which + "holds a NUL byte";
    return {};
}

replay_documents make_error(std::string error)
{
    return {{}, std::move(error)};
}

} // namespace

replay_documents split_documents(std::string_view text)
{
    replay_documents result;
    std::size_t start = find_document(text, 0);
    if (text.substr(0, start).find_first_not_of(white_space) != std::string_view::npos)
        return make_error("does not begin with an XML declaration");
    while (start != std::string_view::npos) {
        const std::size_t end = find_document(text, start + 1);
        std::string_view document = text.substr(start, end - start);
        document = document.substr(0, document.find_last_not_of(white_space) + 1);
        std::string error = check_document(document, result.documents.size() + 1);
        if (!error.empty())
            return make_error(std::move(error));
        result.documents.emplace_back(document);
        start = end;
    }
    return result.documents.empty() ? make_error("holds no document") : result;
}

replay_documents read_replay_file(const std::string& path)
{
    whole_file file = read_whole_file(path, max_replay_file_bytes);
    if (!file.error.empty())
        return make_error(std::move(file.error));
    replay_documents result = split_documents(file.text);
    if (!result.error.empty())
        result.error = path + ": " + result.error;
    return result;
}

} // namespace tovrik
