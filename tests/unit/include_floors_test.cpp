// include_floors_test.cpp - the include arrows of client and servers are those of the pictures in
// the architecture page, and none of them go round.
#include "unit/document_text.hpp"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>

namespace
{

using include_map = std::map<std::string, std::set<std::string>>;

/// A folder of the tree whose include lines name its rooms after a prefix.
struct house_folder {
    const char* name;
    const char* prefix;
    const char* drawing; // what stands before its picture
    const char* table;   // the first row of its exceptions
};

constexpr house_folder client_house = {"src", "", "### The picture\n\n```\n",
                                       "| from | to | why |\n"};
constexpr house_folder server_house = {"server", "server/", "### The servers' picture\n\n```\n",
                                       "| from a server's room | to the client's | why |\n"};

/// Which room includes which, header and source of a room taken together. What another house owns
/// has that house's folder before it.
include_map read_includes(const house_folder& house)
{
    const std::filesystem::path sources = std::string{SOURCE_FOLDER "/"} + house.name;
    const std::string prefix = house.prefix;
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
            if (!std::regex_search(line, match, include_line))
                continue;
            const std::string other = match[1];
            if (!other.starts_with(prefix))
                included.insert("src/" + other);
            else if (other.substr(prefix.size()) != room.string())
                included.insert(other.substr(prefix.size()));
        }
    }
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

house_picture read_picture(const house_folder& house)
{
    const std::string page = source_text("docs/architecture.md");
    house_picture picture;
    std::istringstream drawing{text_between(page, house.drawing, "```")};
    for (std::string line; std::getline(drawing, line);)
        read_drawn_line(picture, line);
    const std::string table = text_between(page, house.table, "\n\n");
    for (const auto& row : all_matches(table, R"(\| `([a-z_/]+)` \| `([a-z_/]+)(?:\.hpp)?` \|)"))
        picture.exceptions[row[0]].insert(row[1]);
    return picture;
}

/// Whether an arrow between two folders is one of the page's exceptions; `used` collects those met.
bool is_exception(const house_folder& house, const house_picture& picture, const std::string& room,
                  const std::string& other, include_map& used)
{
    for (const std::string& from : {room, folder_of(room), std::string{house.name}}) {
        const auto found = picture.exceptions.find(from);
        if (found == picture.exceptions.end())
            continue;
        for (const std::string& to : {other, other.substr(0, other.rfind('/'))}) {
            if (found->second.contains(to)) {
                used[from].insert(to);
                return true;
            }
        }
    }
    return false;
}

class include_floors : public testing::TestWithParam<house_folder>
{
};

INSTANTIATE_TEST_SUITE_P(of, include_floors, testing::Values(client_house, server_house),
                         [](const auto& house) { return std::string{house.param.name}; });

TEST_P(include_floors, are_those_of_the_picture_and_its_exceptions)
{
    const house_picture picture = read_picture(GetParam());
    include_map arrows;
    include_map used;
    for (const auto& [room, included] : read_includes(GetParam())) {
        auto& below = arrows[folder_of(room)];
        for (const std::string& other : included) {
            if (folder_of(other) != folder_of(room) &&
                !is_exception(GetParam(), picture, room, other, used))
                below.insert(folder_of(other));
        }
    }
    EXPECT_EQ(arrows, picture.arrows);
    EXPECT_EQ(used, picture.exceptions);
}

TEST_P(include_floors, run_down_the_picture)
{
    const house_picture picture = read_picture(GetParam());
    for (auto from = picture.folders.begin(); from != picture.folders.end(); ++from) {
        for (const std::string& to : picture.arrows.at(*from))
            EXPECT_NE(std::find(from + 1, picture.folders.end(), to), picture.folders.end())
                << *from << " includes " << to;
    }
}

TEST_P(include_floors, hold_no_room_that_includes_itself_through_others)
{
    const include_map includes = read_includes(GetParam());
    std::set<std::string> done;
    std::set<std::string> open;
    const std::function<bool(const std::string&)> is_free = [&](const std::string& room) {
        const auto found = includes.find(room);
        if (found == includes.end() || done.contains(room)) // another house's, or looked at
            return true;
        if (!open.insert(room).second)
            return false;
        for (const std::string& other : found->second)
            if (!is_free(other))
                return false;
        open.erase(room);
        done.insert(room);
        return true;
    };
    for (const auto& [room, included] : includes)
        EXPECT_TRUE(is_free(room)) << room;
}

TEST(text_and_framing, know_no_curses)
{
    std::set<std::string> rooms = {"data/text",       "data/xml",        "data/xml_index",
                                   "data/collection", "data/number",     "data/server_registry",
                                   "net/packet",      "net/packet_kind", "base/md5"};
    for (const auto& [room, included] : read_includes(client_house)) {
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
