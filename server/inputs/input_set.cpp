// input_set.cpp - see input_set.hpp.
#include "server/inputs/input_set.hpp"

#include "server/base/limits.hpp"
#include "server/inputs/connect_input.hpp"
#include "server/inputs/input_limits.hpp"
#include "server/inputs/listen_input.hpp"
#include "server/inputs/mqtt_input.hpp"
#include "server/inputs/pipe_input.hpp"
#include "server/inputs/udp_input.hpp"
#include "server/inputs/zmq_input.hpp"

#include <algorithm>
#include <utility>

namespace tovrik
{
namespace
{

using owned_source = std::unique_ptr<input_source>;

template <typename source> owned_source make_source(const input_options& options, input_host& host)
{
    return std::make_unique<source>(options, host);
}

template <prepare_work prepare>
owned_source make_thread_source(const input_options& options, input_host& host)
{
    return std::make_unique<thread_input>(options, host, prepare);
}

struct input_kind {
    input_type type;
    const char* name;
    owned_source (*make)(const input_options& options, input_host& host);
};

constexpr input_kind input_kinds[] = {
    {input_type::udp, "udp", make_source<udp_input>},
    {input_type::tcp_listen, "tcp-listen", make_source<listen_input>},
    {input_type::tcp_connect, "tcp-connect", make_source<connect_input>},
    {input_type::mqtt, "mqtt", make_thread_source<mqtt_prepare>},
    {input_type::zmq, "zmq", make_thread_source<zmq_prepare>},
    {input_type::pipe, "pipe", make_source<pipe_input>},
};

const input_kind& find_kind(input_type type)
{
    return *std::ranges::find(input_kinds, type, &input_kind::type);
}

/// Passes a line on to the server's owner, unless there have been too many in this second.
void pass_line(line_limit& limit, const std::function<void(const std::string&)>& tell,
               const std::string& line)
{
    const time_point now = steady_clock::now();
    if (now - limit.second_began >= std::chrono::seconds{1})
        limit = {now, 0};
    if (limit.told >= max_complaints_per_second)
        return;
    ++limit.told;
    tell(line);
}

/// Opens an input. Returns an error text, empty on success; then it is opened again later.
std::string open_entry(input_entry& entry, time_point now)
{
    std::string error = entry.source->open(now);
    entry.source->is_open = error.empty();
    entry.open_at = error.empty() ? never : now + retry_take_pause(entry.pause);
    if (error.empty()) {
        entry.pause = {};
        return {};
    }
    return input_line(entry.source->options, error);
}

/// Takes the entry with these options out of a list; an empty entry if there is none.
input_entry take_entry(std::vector<input_entry>& entries, const input_options& options)
{
    const auto found = std::ranges::find_if(entries, [&options](const input_entry& entry) {
        return entry.source && entry.source->options == options;
    });
    return found == entries.end() ? input_entry{} : std::move(*found);
}

input_entry make_entry(input_host& host, const input_options& options, time_point now)
{
    input_entry entry{find_kind(options.type).make(options, host), {}, now};
    entry.source->silence.since = now;
    return entry;
}

/// Moves what an input has received to the end of `messages`.
void take_received(input_source& source, std::vector<transmission>& messages)
{
    append_messages(messages, std::exchange(source.received, {}));
}

} // namespace

input_set::~input_set()
{
    input_set_close(*this);
}

std::vector<std::string> input_set_open(input_set& set, int epoll_fd,
                                        const std::vector<input_options>& options,
                                        const std::function<void(const std::string&)>& tell,
                                        time_point now)
{
    set.host.epoll_fd = epoll_fd;
    if (tell) {
        set.host.tell = [&set, tell](const std::string& line) { pass_line(set.told, tell, line); };
        set.host.complain = [&set, tell](const std::string& line) {
            pass_line(set.complained, tell, line);
        };
    }
    return input_set_change(set, options, now);
}

std::vector<std::string> input_set_change(input_set& set, const std::vector<input_options>& options,
                                          time_point now)
{
    std::vector<input_entry> entries;
    entries.reserve(options.size());
    for (const auto& each : options) {
        entries.push_back(take_entry(set.entries, each));
    }
    // Closed first: a new input may want the port of an old one.
    set.entries = std::move(entries);
    std::vector<std::string> errors;
    for (std::size_t i = 0; i < options.size(); ++i) {
        input_entry& entry = set.entries[i];
        if (entry.source)
            continue;
        entry = make_entry(set.host, options[i], now);
        std::string error = open_entry(entry, now);
        if (!error.empty())
            errors.push_back(std::move(error));
    }
    return errors;
}

std::vector<transmission> input_set_on_event(input_set& set, int fd, time_point now)
{
    const auto owner = set.host.owners.find(fd);
    if (owner == set.host.owners.end())
        return {};
    input_source& source = *owner->second;
    source.on_event(fd, now);
    return std::exchange(source.received, {});
}

bool input_set_owns(const input_set& set, int fd)
{
    return set.host.owners.contains(fd);
}

std::vector<transmission> input_set_on_time(input_set& set, time_point now)
{
    std::vector<transmission> messages;
    for (auto& entry : set.entries) {
        if (entry.source->is_open) {
            entry.source->on_time(now);
        } else if (entry.open_at == never) {
            entry.open_at = now + retry_take_pause(entry.pause);
        } else if (now >= entry.open_at && open_entry(entry, now).empty() && set.host.tell) {
            set.host.tell(input_line(entry.source->options, "open"));
        }
        take_received(*entry.source, messages);
    }
    return messages;
}

std::vector<std::string> input_set_notices(input_set& set, time_point now)
{
    std::vector<std::string> notices;
    for (auto& entry : set.entries) {
        std::string notice = silence_notice(entry.source->silence, entry.source->options.name,
                                            entry.source->counters.last_message, now);
        if (!notice.empty())
            notices.push_back(std::move(notice));
    }
    return notices;
}

time_point input_set_next_time(const input_set& set)
{
    time_point next = never;
    for (const auto& entry : set.entries) {
        const input_source& source = *entry.source;
        if (source.is_open) {
            next = std::min(next, source.next_time());
        } else {
            // One that has just failed has no time yet.
            next = entry.open_at == never ? time_point::min() : std::min(next, entry.open_at);
        }
        if (!source.silence.is_told)
            next = std::min(next, source.silence.since + silence_after);
    }
    return next;
}

std::vector<input_report> input_set_reports(input_set& set)
{
    std::vector<input_report> reports;
    for (auto& entry : set.entries) {
        input_source& source = *entry.source;
        source.refresh_counters();
        reports.push_back({source.options.name, find_kind(source.options.type).name, source.port,
                           source.silence.is_told, source.counters});
    }
    return reports;
}

void input_set_close(input_set& set)
{
    for (const auto& entry : set.entries) {
        entry.source->stop();
    }
    const time_point deadline = steady_clock::now() + thread_end_patience;
    for (const auto& entry : set.entries) {
        entry.source->wait_for_end(deadline);
    }
    set.entries.clear();
}

} // namespace tovrik
