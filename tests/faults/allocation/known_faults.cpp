// known_faults.cpp - see known_faults.hpp.
#include "faults/allocation/known_faults.hpp"

#include <algorithm>
#include <fstream>
#include <string_view>

namespace
{

constexpr std::string_view leak_mark = "leak:";
constexpr std::string_view crash_mark = "crash:";

/// What follows the mark in the lines that begin with it.
std::vector<std::string> marked_lines(const char* file_name, std::string_view mark)
{
    std::ifstream file{file_name};
    std::vector<std::string> found;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(mark))
            found.push_back(line.substr(mark.size()));
    }
    return found;
}

} // namespace

std::vector<known_leak> known_leaks_read()
{
    std::vector<known_leak> known;
    for (const char* file : {LSAN_SUPPRESSIONS, FAULTS_FOLDER "/known_leaks.supp"}) {
        for (std::string& function : marked_lines(file, leak_mark))
            known.push_back({std::move(function)});
    }
    return known;
}

std::vector<known_crash> known_crashes_read()
{
    std::vector<known_crash> known;
    for (const std::string& line : marked_lines(FAULTS_FOLDER "/library_crashes.txt", crash_mark)) {
        const std::size_t blank = line.find(' ');
        known.push_back({line.substr(0, blank), line.substr(blank + 1)});
    }
    return known;
}

std::string crash_place(std::span<const frame_name> frames)
{
    // The handler and the frame that the kernel made for it lie on top.
    const auto trampoline = std::ranges::find(frames, "__restore_rt", &frame_name::function);
    auto frame = trampoline != frames.end() ? trampoline + 1 : frames.begin();
    if (frame == frames.end())
        return "unknown";
    const std::string library = frame->object;
    std::string place = frame->function;
    for (++frame; frame != frames.end() && frame->object == library; ++frame)
        place += "<" + frame->function;
    return place + " in " + library;
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
