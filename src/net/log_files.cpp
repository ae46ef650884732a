// log_files.cpp - see log_files.hpp.
#include "net/log_files.hpp"

#include "app/app_state.hpp"
#include "data/file_open.hpp"
#include "data/owners.hpp"
#include "data/text.hpp"
#include "ui/pane.hpp"

#include <unistd.h>

namespace
{

/// The folder for logs; null when memory is short.
heap_text log_folder()
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

/// Opens "first/second" and reports how that went. A name that does not fit is not opened.
std::FILE* log_open_reported(const char* first, const char* second, const char* suffix)
{
    char name[log_name_bytes];
    const int length = std::snprintf(name, sizeof name, "%s/%s%s", first, second, suffix);
    const bool fits = length >= 0 && static_cast<std::size_t>(length) < sizeof name;
    std::FILE* log = fits ? file_open(name, file_use::appending).release() : nullptr;
    status_report(6, "Logfile '%s' %s opened", name, log != nullptr ? "successfully" : "not");
    return log;
}

void record_write(std::FILE* log, const char* text)
{
    std::fputs(text, log);
    std::fflush(log);
}

} // namespace

void open_log_files(server_entry& entry)
{
    const heap_text folder = log_folder();
    if (!folder)
        return;
    // The server's name stands before the folder; users have their folders laid out for that.
    if (!is_setting_on(SaveToOne)) {
        if (entry.log_file == nullptr)
            entry.log_file = log_open_reported(server_display_name(entry), folder.get(), ".log");
    } else if (app_state.shared_log == nullptr) {
        app_state.shared_log = log_open_reported(folder.get(), "ACARS", ".log");
    }
}

void close_log_file(server_entry& entry)
{
    if (entry.log_file != nullptr)
        std::fclose(entry.log_file);
    entry.log_file = nullptr;
}

void close_shared_log()
{
    if (app_state.shared_log != nullptr)
        std::fclose(app_state.shared_log);
    app_state.shared_log = nullptr;
}

void log_transmission(server_entry& entry, const char* text)
{
    if (is_setting_on(ACARSLog) && entry.log_file != nullptr)
        record_write(entry.log_file, text);
    else if (is_setting_on(SaveToOne) && app_state.shared_log != nullptr)
        record_write(app_state.shared_log, text);
}
