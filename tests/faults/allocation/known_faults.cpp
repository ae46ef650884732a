// known_faults.cpp - see known_faults.hpp.
#include "faults/allocation/known_faults.hpp"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ncurses.h>
#include <sstream>
#include <string_view>

namespace
{

constexpr std::string_view leak_mark = "leak:";
constexpr std::string_view crash_mark = "crash:";
constexpr std::string_view sometimes_mark = "sometimes:";

/// The rest of each line that begins with the mark.
std::vector<std::string> read_marked_lines(const std::string& file_name, std::string_view mark)
{
    std::ifstream file{file_name};
    std::vector<std::string> found;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(mark))
            found.push_back(line.substr(mark.size()));
    }
    return found;
}

/// The lists of crashes: that of the curses that runs, such as "ncurses-6.4.txt", and that of the C
/// library.
std::vector<std::string> crash_lists()
{
    const std::string folder = FAULTS_FOLDER "/library_crashes/";
    std::istringstream words{curses_version()}; // such as "ncurses 6.4.20221231"
    std::string name;
    std::string version;
    words >> name >> version;
    version.resize(std::min(version.size(), version.rfind('.')));
    const std::string own = folder + name + '-' + version + ".txt";
    if (!std::filesystem::exists(own))
        std::fprintf(stderr, "no list of crashes for this curses: %s\n", own.c_str());
    return {own, folder + "glibc.txt"};
}

bool is_program(const frame_name& frame)
{
    return frame.object == "allocation_faults";
}

/// The functions of the test program between a library and its failed allocation.
bool is_allocator(const frame_name& frame)
{
    static constexpr std::string_view names[] = {"make_origin", "record_failure", "must_fail",
                                                 "malloc",      "calloc",         "realloc"};
    return is_program(frame) && std::ranges::find(names, frame.function) != std::end(names);
}

} // namespace

std::vector<known_leak> known_leaks_read()
{
    std::vector<known_leak> known;
    for (const char* file : {LSAN_SUPPRESSIONS, FAULTS_FOLDER "/known_leaks.supp"}) {
        for (std::string& function : read_marked_lines(file, leak_mark))
            known.push_back({std::move(function)});
    }
    return known;
}

std::vector<known_crash> known_crashes_read()
{
    std::vector<known_crash> known;
    for (const std::string& list : crash_lists()) {
        for (const std::string_view mark : {crash_mark, sometimes_mark}) {
            for (const std::string& line : read_marked_lines(list, mark)) {
                const std::size_t blank = line.find(' ');
                known.push_back(
                    {line.substr(0, blank), line.substr(blank + 1), mark == crash_mark});
            }
        }
    }
    return known;
}

std::string library_place(std::span<const frame_name> frames)
{
    const auto first = std::ranges::find_if_not(frames, is_allocator);
    const auto client = std::find_if(first, frames.end(), is_program);
    if (first == client || client == frames.end())
        return "";
    std::string place;
    for (auto frame = first; frame != client; ++frame)
        place += (place.empty() ? "" : "<") + (frame->function.empty() ? "?" : frame->function);
    return place;
}

std::vector<frame_name> frame_names(std::span<void* const> frames)
{
    std::vector<frame_name> names;
    for (const void* frame : frames)
        names.push_back(frame_name_of(frame));
    return names;
}

std::string frames_text(std::span<const frame_name> frames)
{
    std::string text;
    for (const frame_name& frame : frames)
        text += "      " + (frame.function.empty() ? "?" : frame.function) + " in " + frame.object +
                '\n';
    return text;
}

bool is_known_leak(const std::vector<known_leak>& known, std::span<const frame_name> frames)
{
    return std::ranges::any_of(known, [frames](const known_leak& leak) {
        return std::ranges::find(frames, leak.function, &frame_name::function) != frames.end();
    });
}
