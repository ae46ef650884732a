// mail_command.cpp - see mail_command.hpp.
#include "server/mail/mail_command.hpp"

#include "server/base/text_fields.hpp"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace tovrik
{
namespace
{

constexpr const char* default_folders = "/usr/sbin:/usr/bin:/sbin:/bin";

bool is_program(const std::string& path)
{
    struct stat about {
    };
    return stat(path.c_str(), &about) == 0 && S_ISREG(about.st_mode) &&
           access(path.c_str(), X_OK) == 0;
}

/// The places where a program of this name may be.
std::vector<std::string> collect_places(const std::string& name)
{
    if (name.find('/') != std::string::npos)
        return {name};
    const char* const folders = std::getenv("PATH");
    std::vector<std::string> places;
    for (const std::string_view folder :
         split_fields(folders != nullptr ? folders : default_folders, ':')) {
        if (folder.starts_with('/'))
            places.push_back(std::string{folder} + "/" + name);
    }
    return places;
}

} // namespace

std::vector<std::string> mail_command_words(const std::string& command)
{
    std::vector<std::string> words;
    for (const std::string_view word : split_fields(command, ' ')) {
        if (!word.empty())
            words.emplace_back(word);
    }
    return words;
}

std::string mail_command_find(const std::vector<std::string>& words, std::string& path)
{
    if (words.empty())
        return "the command for mail names no program";
    const std::vector<std::string> places = collect_places(words.front());
    const auto found = std::ranges::find_if(places, is_program);
    if (found == places.end())
        return "the mail program \"" + words.front() + "\" cannot be found";
    path = *found;
    return {};
}

} // namespace tovrik
