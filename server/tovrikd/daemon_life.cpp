// daemon_life.cpp - see daemon_life.hpp.
#include "server/tovrikd/daemon_life.hpp"

#include "server/services/server_loop.hpp"
#include "server/tovrikd/configuration_read.hpp"
#include "server/tovrikd/daemon_channels.hpp"
#include "server/tovrikd/daemon_mail.hpp"
#include "server/tovrikd/daemon_options.hpp"
#include "server/tovrikd/daemon_report.hpp"
#include "server/tovrikd/daemon_traffic.hpp"
#include "server/tovrikd/reference_files.hpp"

#include <algorithm>
#include <ctime>
#include <memory>
#include <sys/epoll.h>
#include <utility>

namespace tovrik
{
namespace
{

constexpr std::chrono::seconds report_interval{1};
constexpr std::chrono::hours journal_interval{1};
constexpr std::time_t seconds_of_day = 86400;
/// How long the wall clock must have run evenly before anything is old enough to be forgotten.
constexpr std::chrono::minutes even_clock_patience{30};

/// A configuration and the files that it names, or all that is wrong with them.
struct read_files {
    configuration made;
    std::vector<password> passwords;
    std::vector<std::string> mistakes;
};

read_files read_all(const std::string& configuration_path)
{
    configuration_result configured = configuration_read(configuration_path);
    read_files files{std::move(configured.made), {}, std::move(configured.mistakes)};
    if (!files.mistakes.empty() || files.made.access.passwords_file.empty())
        return files;
    passwords_result read = passwords_read(files.made.access.passwords_file);
    files.passwords = std::move(read.passwords);
    files.mistakes = std::move(read.mistakes);
    return files;
}

void tell_all(daemon& running, const std::vector<std::string>& lines)
{
    for (const std::string& line : lines) {
        running.journal.put(line);
    }
}

void take_files(daemon& running, read_files files)
{
    running.chosen = std::move(files.made);
    running.passwords = std::move(files.passwords);
    running.offered = make_service_options(running.chosen, running.passwords);
    running.mails.change(make_mail_options(running.chosen));
    if (const std::string complaint = mail_complaint(running.chosen); !complaint.empty())
        running.journal.put(complaint);
}

/// What clients have added counts more than what files say.
void take_reference(daemon& running, reference_files_result read)
{
    tell_all(running, read.complaints);
    running.server.services.reference.fall_back_on(
        std::make_shared<const reference_data>(std::move(read.entries)));
}

/// Reads the reference files beside the loop, since large ones take a second.
void read_reference_again(daemon& running)
{
    const auto read = std::make_shared<reference_files_result>();
    const storage_job job{.work =
                              [read, files = running.chosen.reference](database&) {
                                  *read = reference_files_read(files);
                                  return std::string{};
                              },
                          .done =
                              [read, &running](const std::string& error) {
                                  if (error.empty()) {
                                      take_reference(running, std::move(*read));
                                  } else {
                                      running.journal.put(
                                          "the reference files are not read again: " + error);
                                  }
                              }};
    if (!running.kept.kept.read(job))
        running.journal.put("the reference files are not read again: too many reports wait");
}

std::string open_web(daemon& running, const http_configuration& http)
{
    if (http.port == 0) {
        running.web.stop();
        return {};
    }
    return running.web.start(
        {.bind = http.bind, .port = http.port, .public_name = http.public_name});
}

std::string open_server(daemon& running)
{
    std::string error = loop_open(running.server);
    if (error.empty())
        error = running.kept.open(running.chosen.state_directory);
    if (error.empty() &&
        !watch(running.server.epoll.get(), EPOLL_CTL_ADD, running.kept.kept.event_fd(), EPOLLIN))
        error = "cannot wait for the database";
    return error;
}

void start_clocks(daemon& running)
{
    running.started = std::time(nullptr);
    running.next_second = steady_clock::now();
    running.next_hour = running.next_second + journal_interval;
}

void publish_report(daemon& running)
{
    if (running.web.port() != 0)
        running.web.publish(daemon_report(running));
}

void tell_counts(daemon& running)
{
    running.journal.put(format_counts(running), line_level::info);
}

/// Opens the ports of a new configuration. If one of them cannot be had, all are as before.
std::vector<std::string> change_ports(daemon& running, const configuration& made)
{
    const http_configuration& before = running.chosen.http;
    // One that could not be had again is tried again.
    const bool is_web_changed =
        !(made.http == before) || (before.port != 0 && running.web.port() == 0);
    std::vector<std::string> errors;
    const auto take_error = [&errors](std::string error) {
        if (!error.empty())
            errors.push_back(std::move(error));
    };
    if (is_web_changed)
        take_error(open_web(running, made.http));
    if (errors.empty())
        errors = daemon_change_channels(running, made);
    if (!errors.empty() && is_web_changed)
        take_error(open_web(running, before));
    return errors;
}

void refuse_reload(daemon& running, const std::vector<std::string>& mistakes)
{
    publish_report(running); // the web may have been opened again
    running.journal.put("the new configuration is refused; nothing has changed");
    tell_all(running, mistakes);
}

/// Forgets what is old, unless a clock that has jumped lately may only think so.
void forget_old_messages(daemon& running, time_point now)
{
    if (now - running.clock.even_since < even_clock_patience)
        return;
    const std::time_t age = static_cast<std::time_t>(running.chosen.archive_days) * seconds_of_day;
    const std::time_t moment = std::time(nullptr);
    running.kept.forget_before(moment - age);
    running.kept.forget_hits_before(moment - seconds_of_day);
}

} // namespace

daemon_failure daemon_open(daemon& running, const std::string& configuration_path)
{
    running.configuration_path = configuration_path;
    read_files files = read_all(configuration_path);
    if (!files.mistakes.empty())
        return {std::move(files.mistakes), true};
    take_files(running, std::move(files));
    take_reference(running, reference_files_read(running.chosen.reference));
    std::string error = open_server(running);
    if (!error.empty())
        return {.lines = {error}};
    std::vector<std::string> errors = daemon_change_channels(running, running.chosen);
    if (error = open_web(running, running.chosen.http); !error.empty())
        errors.push_back(error);
    if (!errors.empty())
        return {.lines = std::move(errors)};
    tell_all(running, input_set_open(
                          running.inputs, running.server.epoll.get(), running.chosen.inputs,
                          [&running](const std::string& line) { running.journal.put(line); },
                          steady_clock::now()));
    start_clocks(running);
    publish_report(running); // nobody who asks at once is told that there is none
    return {};
}

int daemon_wait_ms(const daemon& running, time_point now)
{
    return loop_wait_ms(
        running.server,
        std::min({running.next_second, running.next_hour, input_set_next_time(running.inputs),
                  joining_next_time(running.joined), doubles_next_time(running.known)}),
        now);
}

void daemon_on_event(daemon& running, int fd, time_point now)
{
    if (fd == running.kept.kept.event_fd()) {
        running.kept.kept.run_finished();
    } else if (!running.mails.on_event(fd) && !loop_on_event(running.server, fd)) {
        daemon_take_messages(running, input_set_on_event(running.inputs, fd, now), now);
    }
}

void daemon_on_time(daemon& running, time_point now)
{
    daemon_take_messages(running, input_set_on_time(running.inputs, now), now);
    daemon_pass_on_waiting(running, now);
    running.mails.on_time(running.server.epoll.get(), now, std::time(nullptr));
    if (now >= running.next_second) {
        running.next_second = now + report_interval;
        even_clock_look(running.clock, now, std::time(nullptr));
        daemon_tell_silence(running, now);
        publish_report(running);
        running.journal.flush();
    }
    if (now >= running.next_hour) {
        running.next_hour = now + journal_interval;
        tell_counts(running);
        forget_old_messages(running, now);
    }
    loop_on_time(running.server, now);
}

void daemon_reload(daemon& running, time_point now)
{
    read_files files = read_all(running.configuration_path);
    if (files.mistakes.empty())
        files.mistakes = fixed_key_changes(running.chosen, files.made);
    if (files.mistakes.empty())
        files.mistakes = change_ports(running, files.made);
    if (!files.mistakes.empty()) {
        refuse_reload(running, files.mistakes);
        return;
    }
    take_files(running, std::move(files));
    read_reference_again(running);
    tell_all(running, input_set_change(running.inputs, running.chosen.inputs, now));
    publish_report(running); // whoever asks the web after the next line gets what is new
    running.journal.put("the new configuration is in use", line_level::info);
}

void daemon_say_good_bye(daemon& running)
{
    running.mails.leave();
    for (channel& each : running.server.channels) {
        loop_close_channel(running.server, each);
    }
}

bool daemon_is_done(const daemon& running)
{
    return running.server.sessions.empty();
}

void daemon_close(daemon& running)
{
    input_set_close(running.inputs);
    daemon_pass_on_all(running);
    loop_drop_clients(running.server);
    running.web.stop();
    running.mails.close();
    running.kept.close();
    running.journal.flush();
}

} // namespace tovrik
