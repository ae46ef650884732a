// compared_programs.cpp - see compared_programs.hpp.
//
// The others are set up as their users have them, but without a network.
#include "bench/compared_programs.hpp"

#include "bench/server_park.hpp"

#include <cstdio>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr const char* feed = "<?xml version=\"1.0\"?><rss version=\"2.0\"><channel>"
                             "<title>Stations</title><link>http://localhost/</link>"
                             "<description>Stations</description><item><title>One</title>"
                             "<link>http://localhost/1</link></item></channel></rss>\n";

void make_pipe(const temp_home& home)
{
    mkfifo(home.path_of(message_pipe).c_str(), 0600);
}

void prepare_client(const temp_home& home)
{
    std::vector<int> ports;
    for (int port = 1; port <= configured_servers; ++port)
        ports.push_back(port);
    home.write_config(config_of(ports));
}

/// Its plugin makes the pipe.
void prepare_weechat(const temp_home& home)
{
    home.make_folder("weechat");
    home.write_file("weechat/fifo.conf",
                    std::string{"[file]\nenabled = on\npath = \""} + message_pipe + "\"\n");
}

/// A leading "-" would be an option; an empty text would be a request for help.
std::string make_weechat_line(std::string_view line)
{
    const char* guard = line.starts_with('-') ? "\\" : "";
    return std::string{"core.weechat */print "}.append(guard).append(line);
}

void prepare_newsboat(const temp_home& home)
{
    home.write_file("feed.xml", feed);
    home.write_file("urls", "file://" + home.path_of("feed.xml") + "\n");
    home.write_file("config", "auto-reload no\nrefresh-on-startup no\n");
}

const std::vector<compared_program>& list_all_programs()
{
    static const std::vector<compared_program> programs = {
        {"client",
         nullptr,
         {CLIENT_BINARY},
         "station-020",
         "\x18",
         prepare_client,
         message_source::server},
        {"floor", nullptr, {FLOOR_BINARY}, "station-020", "\x18", make_pipe, message_source::pipe},
        {"irssi",
         "irssi",
         {"/usr/bin/irssi", "--home=irssi", "--noconnect"},
         "[(status)]",
         "/quit\r",
         make_pipe,
         message_source::pipe,
         "/exec - cat messages\r"},
        {"weechat",
         "weechat-curses",
         {"/usr/bin/weechat", "--dir", "weechat", "--no-connect"},
         "Plugins loaded",
         "/quit\r",
         prepare_weechat,
         message_source::pipe,
         "",
         make_weechat_line},
        {"newsboat",
         "newsboat",
         {"/usr/bin/newsboat", "-u", "urls", "-c", "cache.db", "-C", "config"},
         "Your feeds",
         "q",
         prepare_newsboat,
         message_source::none},
        {"htop", "htop", {"/usr/bin/htop"}, "Quit", "q", nullptr, message_source::none},
        // The program in its pane must not count, so it starts without the home. Its end also ends
        // tmux.
        {"tmux",
         "tmux",
         {"/usr/bin/tmux", "-f", "/dev/null", "-S", "socket", "new-session", "-n", "quiet",
          "exec env -u HOME cat messages"},
         "0:quiet*",
         "\x03",
         make_pipe,
         message_source::pipe},
    };
    return programs;
}

std::string read_installed_version(const char* package)
{
    const std::string command = std::string{"dpkg-query -W -f '${Version}' "} + package;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> answer{popen(command.c_str(), "r"),
                                                                 pclose};
    char version[64] = "";
    if (!answer || std::fgets(version, sizeof version, answer.get()) == nullptr)
        return "of an unknown version";
    return version;
}

} // namespace

std::vector<compared_program> programs_to_compare(bool with_peers)
{
    std::vector<compared_program> chosen;
    for (const compared_program& program : list_all_programs()) {
        const bool is_peer = program.package != nullptr;
        if (is_peer && !with_peers)
            continue;
        if (access(program.command.front().c_str(), X_OK) == 0)
            chosen.push_back(program);
        else
            std::fprintf(stderr, "bench_programs: no %s here, left out (package %s)\n",
                         program.command.front().c_str(), is_peer ? program.package : "none");
    }
    return chosen;
}

std::vector<std::string> package_versions(const std::vector<compared_program>& programs)
{
    std::vector<std::string> versions;
    for (const compared_program& program : programs)
        if (program.package != nullptr)
            versions.push_back(std::string{program.package} + " " +
                               read_installed_version(program.package));
    return versions;
}
