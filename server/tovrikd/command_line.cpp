// command_line.cpp - see command_line.hpp.
#include "server/tovrikd/command_line.hpp"

#include "server/tovrikd/add_password.hpp"
#include "server/tovrikd/configuration_read.hpp"
#include "server/tovrikd/daemon_mail.hpp"
#include "server/tovrikd/exit_status.hpp"
#include "server/tovrikd/passwords.hpp"
#include "server/tovrikd/reference_files.hpp"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace tovrik
{
namespace
{

constexpr std::size_t help_column = 28;

// Lines of 79 characters at most: terminals have 80, and newer versions of the library break longer
// ones once more.
constexpr const char* description =
    "An ACARS message server that passes the messages of receivers on to clients,\n"
    "and keeps what they ask it to keep. It runs until a signal ends it.\n";

constexpr const char* help_footer =
    "SIGHUP makes it read its configuration again; a wrong one changes nothing.\n"
    "\n"
    "Exit status: 0 after SIGTERM or SIGINT, 1 if it cannot serve, 2 for wrong\n"
    "options or a wrong configuration.";

void add_options(CLI::App& app, tovrikd_options& options, bool& is_check, std::string& label)
{
    app.add_option("--config", options.configuration_path, "File with the configuration")
        ->type_name("FILE")
        ->capture_default_str();
    auto* const check =
        app.add_flag("--check", is_check, "Only say what is wrong with the configuration");
    app.add_option("--add-password", label,
                   "Ask for a password and add it to the file of\n"
                   "passwords under a name for its user")
        ->type_name("LABEL")
        ->excludes(check);
    app.set_version_flag("--version", std::string{"tovrikd "} + SERVER_VERSION,
                         "Print the version and exit");
}

void append_lines(std::vector<std::string>& lines, const std::vector<std::string>& more)
{
    lines.insert(lines.end(), more.begin(), more.end());
}

} // namespace

std::optional<int> read_tovrikd_options(int argc, const char* const* argv, tovrikd_options& options)
{
    CLI::App app{description, "tovrikd"};
    app.footer(help_footer);
    app.get_formatter()->column_width(help_column);
    std::string label;
    bool is_check = false;
    add_options(app, options, is_check, label);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& answer) {
        return app.exit(answer);
    } catch (const CLI::ParseError& wrong) {
        return exit_complaining({wrong.what(), "tovrikd --help lists the options"},
                                status_bad_usage);
    }
    if (is_check)
        return check_configuration(options.configuration_path);
    if (app.count("--add-password") > 0)
        return add_password(options.configuration_path, label);
    return std::nullopt;
}

int check_configuration(const std::string& path)
{
    const configuration_result read = configuration_read(path);
    std::vector<std::string> mistakes = read.mistakes;
    if (mistakes.empty()) {
        const std::string& passwords = read.made.access.passwords_file;
        if (!passwords.empty())
            append_lines(mistakes, passwords_read(passwords).mistakes);
        append_lines(mistakes, reference_files_read(read.made.reference).complaints);
        if (const std::string complaint = mail_complaint(read.made); !complaint.empty())
            mistakes.push_back(path + ": " + complaint);
    }
    if (!mistakes.empty())
        return exit_complaining(mistakes, status_bad_usage);
    std::printf("tovrikd: %s is good\n", path.c_str());
    return 0;
}

} // namespace tovrik
