// include_floors_test.cpp - include arrows of the client point down, or sideways without a circle.
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace
{

const std::map<int, std::vector<std::string>> rooms_by_floor = {
    {6, {"app/main", "app/start_stop", "app/signals", "app/main_loop", "app/terminate"}},
    {5, {"net/poll"}},
    {4,
     {"net/transmission", "net/capabilities", "net/server_list_fetch", "data/settings_toggle",
      "services/database_update", "services/mailing", "services/pager", "services/pager_list",
      "services/report", "services/request_text", "services/server_info", "services/service_menu"}},
    {3,
     {"net/connection", "net/log_files", "net/packet_input", "net/packet_output", "net/resolve",
      "data/config_file", "ui/screen"}},
    {2,
     {"ui/modal_box", "ui/prompt", "ui/popup", "ui/pane", "ui/redraw", "ui/screen_size",
      "ui/server_pane", "ui/help", "data/settings_page"}},
    {1,
     {"app/app_state",
      "app/pause",
      "ui/glyphs",
      "ui/keys",
      "ui/terminal_line",
      "ui/terminal_type",
      "data/collection",
      "data/text",
      "data/xml",
      "data/xml_index",
      "data/server_registry",
      "data/settings_table",
      "data/owners",
      "data/home",
      "data/file_open",
      "data/file_replace",
      "data/folder",
      "data/retry",
      "data/unfinished_file",
      "net/md5",
      "net/limits",
      "net/log_record",
      "net/packet",
      "net/packet_kind",
      "net/readiness",
      "net/directory",
      "net/directory_lines"}},
};

using include_map = std::map<std::string, std::set<std::string>>;

/// Which room includes which, header and source of a room taken together.
include_map includes_of(const std::filesystem::path& sources)
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

std::map<std::string, int> floors()
{
    std::map<std::string, int> floor_of;
    for (const auto& [floor, rooms] : rooms_by_floor)
        for (const std::string& room : rooms)
            floor_of[room] = floor;
    return floor_of;
}

const include_map& client_includes()
{
    static const include_map includes = includes_of(SOURCE_FOLDER "/src");
    return includes;
}

TEST(include_floors, every_file_has_a_floor_and_every_floor_its_files)
{
    std::set<std::string> there;
    for (const auto& [room, included] : client_includes())
        there.insert(room);
    std::set<std::string> named;
    for (const auto& [room, floor] : floors())
        named.insert(room);
    EXPECT_EQ(there, named);
}

TEST(include_floors, no_arrow_points_up)
{
    const auto floor_of = floors();
    for (const auto& [room, included] : client_includes())
        for (const std::string& other : included)
            EXPECT_GE(floor_of.at(room), floor_of.at(other)) << room << " includes " << other;
}

TEST(include_floors, no_arrows_go_round)
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
        EXPECT_TRUE(is_free(room)) << room << " includes itself by way of others";
}

TEST(include_floors, the_ground_of_text_and_framing_needs_no_curses)
{
    for (const char* room : {"data/text", "data/xml", "data/xml_index", "data/collection",
                             "data/server_registry", "net/packet", "net/md5"}) {
        for (const char* kind : {".hpp", ".cpp"}) {
            std::ifstream stream{std::string{SOURCE_FOLDER "/src/"} + room + kind};
            const std::string text{std::istreambuf_iterator<char>{stream}, {}};
            ASSERT_FALSE(text.empty()) << room << kind;
            EXPECT_EQ(text.find("ncurses"), std::string::npos) << room << kind;
        }
    }
}

} // namespace
