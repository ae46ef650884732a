// include_floors_test.cpp - the client's include arrows are those of the picture in the
// architecture page, and none of them go round.
#include "unit/document_text.hpp"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>

namespace
{

using include_map = std::map<std::string, std::set<std::string>>;

/// Which room includes which, header and source of a room taken together.
include_map read_includes(const std::filesystem::path& sources)
{
    static const std::regex include_line{R"(^#include \"([a-z_0-9/]+)\.hpp\")"};
    include_map includes;
    for (const auto& file : std::filesystem::recursive_directory_iterator{sources}) {
        const std::string kind = file.path().extension();
        if (kind != ".cpp" && kind != ".hpp")
            continue;
        const auto room = std::filesystem::relative(file.path(), sources).replace_extension();
        auto& included = includes[room.string()];
        std::ifstream stream{file.path()};
        for (std::string line; std::getline(stream, line);) {
            std::smatch match;
            if (std::regex_search(line, match, include_line) && match[1] != room.string())
                included.insert(match[1]);
        }
    }
    return includes;
}

const include_map& client_includes()
{
    static const include_map includes = read_includes(SOURCE_FOLDER "/src");
    return includes;
}

std::string folder_of(const std::string& room)
{
    return room.substr(0, room.find('/'));
}

/// What the architecture page says.
struct house_picture {
    std::vector<std::string> folders; // from the top
    include_map arrows;               // of folders
    include_map exceptions;           // from a room to a folder or a room
};

/// Reads a drawn line: a folder, and after an arrow the folders below that it includes.
void read_drawn_line(house_picture& picture, const std::string& line)
{
    std::istringstream words{line};
    std::string folder;
    std::string word;
    words >> folder;
    picture.folders.push_back(folder);
    picture.arrows[folder];
    while (words >> word) {
        if (word != "-->")
            picture.arrows[folder].insert(word);
    }
}

house_picture read_picture()
{
    const std::string page = source_text("docs/architecture.md");
    house_picture picture;
    std::istringstream drawing{text_between(page, "### The picture\n\n```\n", "```")};
    for (std::string line; std::getline(drawing, line);)
        read_drawn_line(picture, line);
    const std::string table = text_between(page, "| from | to | why |\n", "\n\n");
    for (const auto& row : all_matches(table, R"(\| `([a-z_/]+)` \| `([a-z_/]+)` \|)"))
        picture.exceptions[row[0]].insert(row[1]);
    return picture;
}

/// Whether an arrow between two folders is one of the page's exceptions; `used` collects those met.
bool is_exception(const house_picture& picture, const std::string& room, const std::string& other,
                  include_map& used)
{
    for (const std::string& from : {room, folder_of(room), std::string{"src"}}) {
        const auto found = picture.exceptions.find(from);
        if (found == picture.exceptions.end())
            continue;
        for (const std::string& to : {other, folder_of(other)}) {
            if (found->second.contains(to)) {
                used[from].insert(to);
                return true;
            }
        }
    }
    return false;
}

TEST(include_floors, are_those_of_the_picture_and_its_exceptions)
{
    const house_picture picture = read_picture();
    include_map arrows;
    include_map used;
    for (const auto& [room, included] : client_includes()) {
        auto& below = arrows[folder_of(room)];
        for (const std::string& other : included) {
            if (folder_of(other) != folder_of(room) && !is_exception(picture, room, other, used))
                below.insert(folder_of(other));
        }
    }
    EXPECT_EQ(arrows, picture.arrows);
    EXPECT_EQ(used, picture.exceptions);
}

TEST(include_floors, run_down_the_picture)
{
    const house_picture picture = read_picture();
    for (auto from = picture.folders.begin(); from != picture.folders.end(); ++from) {
        for (const std::string& to : picture.arrows.at(*from))
            EXPECT_NE(std::find(from + 1, picture.folders.end(), to), picture.folders.end())
                << *from << " includes " << to;
    }
}

TEST(include_floors, hold_no_room_that_includes_itself_through_others)
{
    std::set<std::string> done;
    std::set<std::string> open;
    const std::function<bool(const std::string&)> is_free = [&](const std::string& room) {
        if (done.contains(room))
            return true;
        if (!open.insert(room).second)
            return false;
        for (const std::string& other : client_includes().at(room))
            if (!is_free(other))
                return false;
        open.erase(room);
        done.insert(room);
        return true;
    };
    for (const auto& [room, included] : client_includes())
        EXPECT_TRUE(is_free(room)) << room;
}

TEST(include_floors, leave_text_and_framing_without_curses)
{
    std::set<std::string> rooms = {"data/text",       "data/xml",        "data/xml_index",
                                   "data/collection", "data/number",     "data/server_registry",
                                   "net/packet",      "net/packet_kind", "net/md5"};
    for (const auto& [room, included] : client_includes()) {
        if (folder_of(room) == "base")
            rooms.insert(room);
    }
    for (const std::string& room : rooms) {
        for (const char* kind : {".hpp", ".cpp"}) {
            if (!std::filesystem::exists(SOURCE_FOLDER "/src/" + room + kind))
                continue;
            const std::string text = source_text("src/" + room + kind);
            EXPECT_EQ(text.find("ncurses"), std::string::npos) << room << kind;
        }
    }
}

} // namespace
