// log_files.cpp - see log_files.hpp.
#include "net/log_files.hpp"

#include "app/app_state.hpp"
#include "base/file_open.hpp"
#include "base/owners.hpp"
#include "data/owned_text.hpp"
#include "data/text.hpp"
#include "ui/pane.hpp"

#include <cstdlib>
#include <unistd.h>

namespace
{

/// The folder for logs; null when out of memory.
heap_text find_log_folder()
{
    const char* folder =
        app_state.setting_texts != nullptr ? app_state.setting_texts[LogFilePath] : nullptr;
    if (folder != nullptr && folder[0] != '\0')
        return heap_text{str_dup(folder)};
    heap_text current{getcwd(nullptr, 0)};
    if (current)
        strip_trailing_slash(current.get());
    return current;
}

/// A log's two fields in the record that owns them.
struct held_log {
    std::FILE*& stream;
    log_condition& condition;
};

held_log hold_own_log(server_entry& entry)
{
    return {entry.log_file, entry.log_state};
}

held_log hold_shared_log()
{
    return {app_state.shared_log, app_state.shared_log_state};
}

/// When the opening of a log is reported: always, or only if it succeeded.
enum class open_report : std::uint8_t { always, success };

/// Opens "first/second.log" and reports how that went. A name that does not fit is not opened.
void open_log(held_log log, const char* first, const char* second, open_report report)
{
    char name[log_name_bytes];
    const int length = std::snprintf(name, sizeof name, "%s/%s.log", first, second);
    const bool fits = length >= 0 && static_cast<std::size_t>(length) < sizeof name;
    log.stream = fits ? file_open(name, file_use::appending).release() : nullptr;
    if (log.stream != nullptr) {
        owned_text_replace(log.condition.name, str_dup(name));
        log.condition.is_lost = false;
    }
    if (log.stream != nullptr || report == open_report::always)
        status_report(colour::notice, "Logfile '%s' %s opened", name,
                      log.stream != nullptr ? "successfully" : "not");
}

/// Closes a log, if it is open; its condition is still remembered.
void close_stream(held_log log)
{
    if (log.stream == nullptr)
        return;
    undo_torn_record(fileno(log.stream), log.condition.torn);
    std::fclose(log.stream);
    log.stream = nullptr;
    log.condition.torn = {};
}

void close_log(held_log log)
{
    close_stream(log);
    owned_text_clear(log.condition.name);
    log.condition = {};
}

/// Reports that a log takes no records; once, until it has taken one again.
void report_failure(log_condition& condition)
{
    if (!condition.is_failing)
        status_report(colour::error, "Logfile '%s' cannot be written",
                      condition.name != nullptr ? condition.name : "");
    condition.is_failing = true;
}

void write_record(held_log log, const char* text)
{
    const int file = fileno(log.stream);
    log.condition.is_lost = is_deleted(file);
    if (!log.condition.is_lost && record_append(file, text, log.condition.torn)) {
        log.condition.is_failing = false;
        return;
    }
    report_failure(log.condition);
    if (log.condition.is_lost)
        close_stream(log);
}

void open_wanted_log(server_entry& entry, open_report report)
{
    const heap_text folder = find_log_folder();
    if (!folder)
        return;
    // Kept on purpose: the server's name stands before the folder; users have laid out their
    // folders for that. Test: logging.puts_the_servers_name_before_the_folder.
    if (!is_setting_on(SaveToOne)) {
        if (entry.log_file == nullptr)
            open_log(hold_own_log(entry), server_display_name(entry), folder.get(), report);
    } else if (app_state.shared_log == nullptr) {
        open_log(hold_shared_log(), folder.get(), "ACARS", report);
    }
}

/// Whether the log that the settings ask for was deleted while it was open.
bool is_log_lost(const server_entry& entry)
{
    if (is_setting_on(SaveToOne))
        return app_state.shared_log_state.is_lost;
    return is_setting_on(ACARSLog) && entry.log_state.is_lost;
}

} // namespace

void open_log_files(server_entry& entry)
{
    open_wanted_log(entry, open_report::always);
}

void close_log_file(server_entry& entry)
{
    close_log(hold_own_log(entry));
}

void close_shared_log()
{
    close_log(hold_shared_log());
}

void log_transmission(server_entry& entry, const char* text)
{
    // That it was lost has been reported; that it still cannot be opened is no news.
    if (is_log_lost(entry))
        open_wanted_log(entry, open_report::success);
    if (is_setting_on(ACARSLog) && entry.log_file != nullptr)
        write_record(hold_own_log(entry), text);
    else if (is_setting_on(SaveToOne) && app_state.shared_log != nullptr)
        write_record(hold_shared_log(), text);
}
