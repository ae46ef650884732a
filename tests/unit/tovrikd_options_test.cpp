// tovrikd_options_test.cpp - what tovrikd does instead of serving: help, version, the check of a
// configuration, and a new password that is asked for on a terminal.
#include "support/line_settings.hpp"
#include "support/patience.hpp"
#include "support/pty_process.hpp"
#include "support/temp_home.hpp"
#include "unit/document_text.hpp"

#include "app/app_state.hpp"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>

namespace
{

const std::string digest = "900150983cd24fb0d6963f7d28e17f72"; // of abc

class tovrikd_options : public testing::Test
{
protected:
    /// Writes a configuration that names the file "passwords" beside it.
    void SetUp() override
    {
        home.write_file("c.toml", "[services]\nmailing = false\n"
                                  "[access]\npasswords_file = 'passwords'\n");
    }

    /// Starts the program on a terminal, in UTF-8.
    void start(std::vector<std::string> options)
    {
        options.insert(options.begin(), TOVRIKD_BINARY);
        program.emplace(program_start{.command = std::move(options),
                                      .environment = {"LC_ALL=C.UTF-8"},
                                      .folder = home.path()});
    }
    void start_adding(const std::string& label)
    {
        start({"--config", home.path_of("c.toml"), "--add-password", label});
    }

    /// Waits until the terminal has shown a text, and gives all that it has shown.
    const std::string& shown(const std::string& text)
    {
        while (screen.find(text) == std::string::npos) {
            const std::string more = program->take_output(default_patience);
            if (more.empty()) {
                ADD_FAILURE() << text << " is not shown: " << screen << program->error_text();
                break;
            }
            screen += more;
        }
        return screen;
    }

    /// The wait status of the program, once it has ended and all that it wrote is in `screen`.
    int ended()
    {
        const auto limit = std::chrono::steady_clock::now() + default_patience;
        while (std::chrono::steady_clock::now() < limit) {
            screen += program->take_output(std::chrono::milliseconds{10});
            if (!program->output_ended())
                continue;
            if (const auto status = program->wait_status())
                return *status;
        }
        ADD_FAILURE() << "does not end";
        return -1;
    }
    int exit_status()
    {
        const int status = ended();
        EXPECT_TRUE(WIFEXITED(status)) << status;
        return WEXITSTATUS(status);
    }

    std::string passwords() const
    {
        return home.read_file("passwords").value_or("none");
    }

    temp_home home;
    std::optional<pty_process> program;
    std::string screen;
};

TEST_F(tovrikd_options, help_fits_terminals_of_80_columns_and_names_every_option_of_the_page)
{
    start({"--help"});
    EXPECT_EQ(exit_status(), 0);
    std::istringstream lines{screen};
    for (std::string line; std::getline(lines, line);)
        EXPECT_LE(line.size(), 80U) << line; // with a carriage return
    EXPECT_EQ(
        matches_of(screen, R"(\n +(?:-\w, *)?--([a-z-]+)[ \r\n])"),
        matches_of(source_text("share/man/tovrikd.8"), R"(\n\.It (?:Fl h , )?Fl Fl ([a-z-]+))"));
    EXPECT_NE(source_text("share/man/tovrikd.8").find("/etc/tovrikd/tovrikd.toml"),
              std::string::npos);
    EXPECT_NE(screen.find("/etc/tovrikd/tovrikd.toml"), std::string::npos);
}

TEST_F(tovrikd_options, version_is_that_of_the_client)
{
    start({"--version"});
    EXPECT_EQ(exit_status(), 0);
    EXPECT_EQ(screen, std::string{"tovrikd "} + client_version + "\r\n");
}

TEST_F(tovrikd_options, without_one_serve_with_the_configuration_of_the_system)
{
    const std::string path = "/etc/tovrikd/tovrikd.toml";
    if (std::filesystem::exists(path))
        GTEST_SKIP() << "this machine has a server of its own";
    start({});
    EXPECT_EQ(exit_status(), 2);
    const std::string said = program->error_text();
    EXPECT_TRUE(said.starts_with("tovrikd: " + path + ": ")) << said;
}

TEST_F(tovrikd_options, that_are_wrong_end_with_2_and_a_reason)
{
    const std::vector<std::vector<std::string>> cases = {{"--frobnicate"},
                                                         {"stray"},
                                                         {"--config"},
                                                         {"--check", "--add-password", "x"},
                                                         {"--add-password"}};
    for (const auto& options : cases) {
        start(options);
        EXPECT_EQ(exit_status(), 2) << options[0];
        EXPECT_TRUE(program->error_text().starts_with("tovrikd: ")) << program->error_text();
        EXPECT_NE(program->error_text().find("\ntovrikd: tovrikd --help lists the options\n"),
                  std::string::npos);
    }
}

TEST_F(tovrikd_options, check_says_that_a_configuration_is_good)
{
    home.write_file("passwords", "me:" + digest + "\n");
    chmod(home.path_of("passwords").c_str(), 0600);
    start({"--config", home.path_of("c.toml"), "--check"});
    EXPECT_EQ(exit_status(), 0);
    EXPECT_EQ(screen, "tovrikd: " + home.path_of("c.toml") + " is good\r\n");
    EXPECT_EQ(program->error_text(), "");
}

TEST_F(tovrikd_options, check_says_everything_that_is_wrong)
{
    home.write_file("c.toml", "name = 1\nservices.mailing = false\nport = 'x'\n");
    start({"--config", "c.toml", "--check"});
    EXPECT_EQ(exit_status(), 2);
    EXPECT_EQ(program->error_text(), "tovrikd: c.toml:1: name must be a text, in quotes\n"
                                     "tovrikd: c.toml:3: port must be a whole number\n");

    home.write_file("c.toml", "services.mailing = false\naccess.passwords_file = 'passwords'\n"
                              "reference.airlines = 'airlines.csv'\n");
    home.write_file("airlines.csv", "LH,Lufthansa\nXX\n");
    start({"--config", "c.toml", "--check"});
    EXPECT_EQ(exit_status(), 2);
    EXPECT_EQ(program->error_text(), "tovrikd: passwords: No such file or directory\n"
                                     "tovrikd: airlines.csv:2: there must be 2 values, not 1\n");
}

TEST_F(tovrikd_options, a_password_is_asked_for_twice_and_added_without_being_shown)
{
    start_adding("me");
    shown("Password for \"me\": ");
    EXPECT_EQ(program->line_settings().c_lflag & ECHO, 0U);
    program->write("abc\r");
    shown("The same again: ");
    EXPECT_EQ(program->line_settings().c_lflag & ECHO, 0U);
    program->write("abc\r");
    EXPECT_EQ(exit_status(), 0);
    EXPECT_EQ(screen, "Password for \"me\": \r\nThe same again: \r\ntovrikd: \"me\" is added to " +
                          home.path_of("passwords") + "\r\n");
    EXPECT_EQ(line_difference(program->line_settings(), program->initial_line_settings()), "");
    EXPECT_EQ(passwords(), "me:" + digest + "\n");
    EXPECT_EQ(std::filesystem::status(home.path_of("passwords")).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    EXPECT_EQ(home.files(), (std::vector<std::string>{"c.toml", "passwords"}));
}

TEST_F(tovrikd_options, a_password_is_added_after_the_others_as_clients_would_send_it)
{
    home.write_file("passwords", "me:" + digest);
    chmod(home.path_of("passwords").c_str(), 0400);
    start_adding("you");
    shown("Password for");
    program->write("\xC3\xBC\r\xC3\xBC\r"); // both at once
    EXPECT_EQ(exit_status(), 0) << program->error_text();
    EXPECT_EQ(passwords(), "me:" + digest + "\nyou:cf0eece3a23b680f6266a21aabba4d32\n");
    EXPECT_EQ(std::filesystem::status(home.path_of("passwords")).permissions(),
              std::filesystem::perms::owner_read);
}

TEST_F(tovrikd_options, a_password_that_cannot_be_is_refused)
{
    const struct {
        std::string typed;
        std::string error;
    } rows[] = {
        {"\r", "a password cannot be empty"},
        {std::string(40, 'x') + "\r", "the client takes at most 39 characters"},
        {"a\x1b[A\r", "it has a character that cannot be typed into the client"},
        {"\xE2\x82\xAC\r", "it has a character that cannot be typed into the client"},
        {std::string(2000, 'x') + "\r", "that is too long"},
        {"abc\rabd\r", "the two are different"},
        {"\x04", "nothing was typed"},
    };
    for (const auto& row : rows) {
        screen.clear();
        start_adding("me");
        shown("Password for");
        program->write(row.typed);
        EXPECT_EQ(exit_status(), 1);
        EXPECT_EQ(program->error_text(), "tovrikd: " + row.error + "\n");
        EXPECT_EQ(line_difference(program->line_settings(), program->initial_line_settings()), "");
    }
    EXPECT_EQ(passwords(), "none");
}

TEST_F(tovrikd_options, a_label_that_cannot_be_is_refused_before_anything_is_asked)
{
    home.write_file("passwords", "me:" + digest + "\n");
    chmod(home.path_of("passwords").c_str(), 0600);
    const struct {
        const char* label;
        int status;
        std::string error;
    } rows[] = {
        {"me", 1, home.path_of("passwords") + ": the label \"me\" is there already"},
        {"", 2, "a label must have 1 to 40 printable characters of ASCII, and no colon"},
        {"a:b", 2, "a label must have 1 to 40 printable characters of ASCII, and no colon"},
    };
    for (const auto& row : rows) {
        start_adding(row.label);
        EXPECT_EQ(exit_status(), row.status) << row.label;
        EXPECT_EQ(program->error_text(), "tovrikd: " + row.error + "\n");
    }
    EXPECT_EQ(screen, "");
    EXPECT_EQ(passwords(), "me:" + digest + "\n");
}

TEST_F(tovrikd_options, a_password_needs_a_good_configuration_that_names_a_file)
{
    home.write_file("c.toml", "name = 1\nservices.mailing = false\n");
    start_adding("me");
    EXPECT_EQ(exit_status(), 2);
    EXPECT_EQ(program->error_text(),
              "tovrikd: " + home.path_of("c.toml") + ":1: name must be a text, in quotes\n");
    home.write_file("c.toml", "services.mailing = false\n");
    start_adding("me");
    EXPECT_EQ(exit_status(), 2);
    EXPECT_EQ(program->error_text(), "tovrikd: " + home.path_of("c.toml") +
                                         ": passwords_file in [access] names no file\n");
}

TEST_F(tovrikd_options, a_question_that_a_signal_ends_gives_the_terminal_back_as_it_was)
{
    const struct {
        const char* typed; // or nothing, and the signal is sent
        int signal;
    } rows[] = {{"\x03", SIGINT}, {"\x1C", SIGQUIT}, {"", SIGTERM}, {"", SIGHUP}};
    for (const auto& row : rows) {
        screen.clear();
        start_adding("me");
        shown("Password for");
        program->write("ab");
        if (*row.typed == '\0') {
            program->send_signal(row.signal);
        } else {
            program->write(row.typed);
        }
        const int status = ended();
        EXPECT_TRUE(WIFSIGNALED(status)) << status;
        EXPECT_EQ(WTERMSIG(status), row.signal);
        EXPECT_EQ(line_difference(program->line_settings(), program->initial_line_settings()), "");
    }
    EXPECT_EQ(passwords(), "none");
}

TEST_F(tovrikd_options, a_password_is_never_read_from_anything_but_a_terminal)
{
    const std::string command =
        "printf 'abc\\nabc\\n' | ABC=abc setsid -w '" TOVRIKD_BINARY "' --config '" +
        home.path_of("c.toml") + "' --add-password me 2>'" + home.path_of("said") + "'";
    const int status = std::system(command.c_str());
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_EQ(home.read_file("said"), "tovrikd: there is no terminal to ask on\n");
    EXPECT_EQ(passwords(), "none");
}

} // namespace
