// terminal_session.cpp - a program at a terminal as a person uses it: keys go in, a screen comes
// out.
#include "support/terminal_session.hpp"

#include "support/sanitizer_options.hpp"

#include <cctype>
#include <cstdlib>
#include <sys/wait.h>
#include <utility>

namespace
{

/// Conditions may depend on files and sockets too, so they are checked at least this often.
constexpr std::chrono::milliseconds max_check_interval{20};

/// A stopped program does not finish its output.
constexpr std::chrono::milliseconds max_time_behind = patience(1);

/// Sent through the terminal after the program's output, and removed again at this end.
constexpr std::string_view output_mark = "\033_everything-before-this\033\\";

std::vector<std::string> make_environment(const terminal_options& options)
{
    std::map<std::string, std::string> variables = sanitizer_environment();
    const char* path = std::getenv("PATH");
    variables["PATH"] = path != nullptr ? path : "/usr/bin:/bin";
    variables["TERM"] = "screen-256color";
    variables["LC_ALL"] = "C.UTF-8";
    variables["TZ"] = "UTC";
    if (!options.home.empty())
        variables["HOME"] = options.home;
    for (const auto& [name, value] : options.environment)
        variables[name] = value;
    for (const std::string& name : options.unset)
        variables.erase(name);
    std::vector<std::string> lines;
    lines.reserve(variables.size());
    for (const auto& [name, value] : variables)
        lines.push_back(std::string{name}.append("=").append(value));
    return lines;
}

program_start make_start(const terminal_options& options)
{
    return {.command = options.command,
            .environment = make_environment(options),
            .folder = options.folder,
            .rows = options.rows,
            .columns = options.columns};
}

} // namespace

terminal_session::terminal_session(const terminal_options& options)
    : display(options.rows, options.columns, options.utf8), program(make_start(options))
{
}

terminal_session::~terminal_session()
{
    const std::string errors = error_text();
    if (has_sanitizer_report(errors))
        ADD_FAILURE() << "a sanitizer reported:\n" << errors;
}

void terminal_session::send(std::string_view bytes)
{
    EXPECT_TRUE(program.write(bytes)) << "the program does not take its keys\n" << description();
}

void terminal_session::send_key(named_key key)
{
    screen(); // the key's bytes depend on modes that may only just have arrived
    send(display.key_bytes(key));
}

void terminal_session::send_control(char letter)
{
    const char byte = static_cast<char>(letter & 0x1F);
    send({&byte, 1});
}

void terminal_session::send_meta(char letter, meta_form form)
{
    const auto code = static_cast<unsigned char>(letter | 0x80);
    std::string bytes;
    if (form == meta_form::escape_first)
        bytes = {'\033', letter};
    else if (form == meta_form::high_bit)
        bytes = {static_cast<char>(code)};
    else
        bytes = {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
    send(bytes);
}

void terminal_session::resize(int rows, int columns)
{
    if (!is_seen)
        take_in_everything();
    screen();
    is_seen = true;
    display.resize(rows, columns);
    program.set_size(rows, columns);
}

void terminal_session::resize_unseen(int rows, int columns)
{
    screen();
    display.forget_beginning(); // its end will not be seen
    is_seen = false;
    program.set_size(rows, columns);
}

void terminal_session::hold_output()
{
    take_in_everything();
    program.hold_output(true);
    is_held = true;
    screen();
}

void terminal_session::release_output()
{
    program.hold_output(false);
    is_held = false;
}

void terminal_session::read_held_output(std::size_t count)
{
    program.read_held(count);
    screen();
}

void terminal_session::hang_up()
{
    take_in_everything();
    program.hang_up();
}

void terminal_session::take_in(std::chrono::milliseconds limit)
{
    show(program.take_output(limit));
}

void terminal_session::show(const std::string& output)
{
    if (!is_seen)
        return;
    raw += output;
    display.feed(output);
    const std::string answers = display.take_answers();
    if (!answers.empty())
        program.write(answers);
}

void terminal_session::take_in_everything()
{
    if (is_held) // A mark would not come through.
        return;
    const auto deadline = std::chrono::steady_clock::now() + max_time_behind;
    while (program.is_behind() && std::chrono::steady_clock::now() < deadline)
        take_in(std::chrono::milliseconds{1});
    const bool marked = program.write_after_program(output_mark);
    std::string output;
    std::size_t place = std::string::npos;
    do {
        output += program.take_output(max_check_interval);
        place = output.find(output_mark);
    } while (marked && place == std::string::npos && !program.output_ended());
    if (place != std::string::npos)
        output.erase(place, output_mark.size());
    show(output);
}

const terminal_screen& terminal_session::screen()
{
    take_in(std::chrono::milliseconds{0});
    return display;
}

std::string terminal_session::row(int number)
{
    return screen().text(number);
}

screen_cell terminal_session::cell(int row, int column)
{
    return screen().cell(row, column);
}

int terminal_session::bells()
{
    return screen().bells();
}

testing::AssertionResult terminal_session::wait_until(const std::function<bool()>& holds,
                                                      std::string_view what,
                                                      std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (;;) {
        take_in(std::chrono::milliseconds{0});
        if (holds()) {
            take_in_everything();
            if (holds())
                return testing::AssertionSuccess();
        }
        if (std::chrono::steady_clock::now() >= deadline)
            return testing::AssertionFailure() << "never: " << what << '\n' << description();
        if (program.output_ended())
            std::this_thread::sleep_for(max_check_interval); // nothing will wake us any more
        else
            take_in(max_check_interval);
    }
}

testing::AssertionResult terminal_session::wait_for_keys_read(std::chrono::milliseconds limit)
{
    return wait_until([this] { return !has_unread_keys(); }, "no key waits", limit);
}

testing::AssertionResult terminal_session::wait_for_text(std::string_view text,
                                                         std::chrono::milliseconds limit)
{
    return wait_until([&] { return shows(text); }, "\"" + std::string{text} + "\" is shown", limit);
}

testing::AssertionResult terminal_session::wait_for_no_text(std::string_view text,
                                                            std::chrono::milliseconds limit)
{
    return wait_until([&] { return !shows(text); }, "\"" + std::string{text} + "\" is gone", limit);
}

std::optional<int> terminal_session::wait_for_exit(std::chrono::milliseconds limit)
{
    const auto result =
        wait_until([&] { return program.wait_status().has_value() && program.output_ended(); },
                   "the program ends", limit);
    EXPECT_TRUE(result);
    return program.wait_status();
}

bool terminal_session::shows(std::string_view text)
{
    screen();
    for (int at = 0; at < display.rows(); ++at)
        if (display.text(at).find(text) != std::string::npos)
            return true;
    return false;
}

const std::string& terminal_session::raw_output()
{
    screen();
    return raw;
}

void terminal_session::forget_raw_output()
{
    screen();
    raw.clear();
}

std::string terminal_session::error_text() const
{
    return program.error_text();
}

termios terminal_session::line_settings() const
{
    return program.line_settings();
}

const termios& terminal_session::initial_line_settings() const
{
    return program.initial_line_settings();
}

void terminal_session::send_signal(int number)
{
    program.send_signal(number);
}

pid_t terminal_session::process_id() const
{
    return program.id();
}

std::string terminal_session::description()
{
    std::string all = "screen of " + std::to_string(display.rows()) + " x " +
                      std::to_string(display.columns()) + ", " + std::to_string(display.bells()) +
                      " bells:\n";
    for (int at = 0; at < display.rows(); ++at) {
        std::string number = std::to_string(at);
        all += std::string(3 - std::min<std::size_t>(3, number.size()), ' ') + number + " |" +
               display.text(at) + "|\n";
    }
    const std::optional<int> status = program.wait_status();
    if (status)
        all += "the program has ended, wait status " + std::to_string(*status) + '\n';
    const std::string errors = error_text();
    if (!errors.empty())
        all += "standard error:\n" + errors;
    return all;
}
