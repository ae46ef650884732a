// temp_home.hpp - a temporary home folder for one test.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class temp_home
{
public:
    /// Makes an empty folder; ends the test program on failure.
    temp_home();
    /// Removes the folder with everything in it.
    ~temp_home();
    temp_home(const temp_home&) = delete;
    temp_home& operator=(const temp_home&) = delete;

    /// Absolute, without a final slash.
    const std::string& path() const
    {
        return folder;
    }
    /// The absolute path of a file in it.
    std::string path_of(std::string_view name) const;
    /// Writes ncursesclient.conf.
    void write_config(std::string_view text) const;
    /// Writes the whole file `name`, replacing an earlier one.
    void write_file(std::string_view name, std::string_view bytes) const;
    void make_folder(std::string_view name) const;
    /// The file's bytes; none if there is no such file.
    std::optional<std::string> read_file(std::string_view name) const;
    /// The bytes of ncursesclient.conf; none if there is no such file.
    std::optional<std::string> read_config() const;
    /// Relative paths of all files below the folder, in alphabetical order; folders end in "/".
    std::vector<std::string> files() const;

private:
    std::string folder;
};
