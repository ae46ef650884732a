// temp_home.cpp - a temporary home folder for one test.
#include "support/temp_home.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace
{

constexpr const char* config_name = "ncursesclient.conf";

} // namespace

temp_home::temp_home()
{
    std::string pattern = std::filesystem::temp_directory_path() / "nc-home-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        std::perror("cannot make a home folder");
        std::abort();
    }
    folder = pattern;
}

temp_home::~temp_home()
{
    std::error_code ignored;
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
    std::filesystem::remove_all(folder, ignored);
}

std::string temp_home::path_of(std::string_view name) const
{
    return folder + '/' + std::string{name};
}

void temp_home::write_config(std::string_view text) const
{
    write_file(config_name, text);
}

void temp_home::write_file(std::string_view name, std::string_view bytes) const
{
    std::ofstream file{path_of(name), std::ios::binary | std::ios::trunc};
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void temp_home::make_folder(std::string_view name) const
{
    std::filesystem::create_directories(path_of(name));
}

std::optional<std::string> temp_home::read_file(std::string_view name) const
{
    std::ifstream file{path_of(name), std::ios::binary};
    if (!file)
        return std::nullopt;
    return std::string{std::istreambuf_iterator<char>{file}, {}};
}

std::optional<std::string> temp_home::read_config() const
{
    return read_file(config_name);
}

std::vector<std::string> temp_home::files() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator{folder}) {
        std::string name = entry.path().lexically_relative(folder);
        names.push_back(entry.is_directory() ? name + '/' : name);
    }
    std::sort(names.begin(), names.end());
    return names;
}
