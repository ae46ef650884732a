// database_file.cpp - see database_file.hpp.
#include "server/storage/database_file.hpp"

#include "base/owners.hpp"
#include "server/base/system_text.hpp"

#include <cstdio>
#include <fcntl.h>
#include <sqlite3.h>
#include <string_view>
#include <sys/stat.h>

namespace tovrik
{
namespace
{

constexpr int busy_wait_ms = 5000;
constexpr mode_t private_mode = 0600;

/// The head of a file of SQLite, and where it has what is looked at. Numbers are big-endian.
constexpr std::size_t head_bytes = 100;
constexpr std::string_view head_mark{"SQLite format 3\0", 16};
constexpr std::size_t version_place = 60;
constexpr std::size_t application_place = 68;

/// foreign_keys and synchronous are forgotten when a connection is closed. The log's file is cut
/// when a checkpoint has emptied it.
constexpr const char* writing_settings = "PRAGMA journal_mode = WAL;"
                                         "PRAGMA foreign_keys = ON;"
                                         "PRAGMA synchronous = FULL;"
                                         "PRAGMA journal_size_limit = 16777216;";

/// The file that is being made is not in use, and goes if this fails.
constexpr const char* making_settings = "PRAGMA journal_mode = MEMORY;"
                                        "PRAGMA synchronous = FULL;";

std::uint32_t read_number(std::string_view head, std::size_t place)
{
    constexpr unsigned byte_bits = 8;
    std::uint32_t number = 0;
    for (const char byte : head.substr(place, sizeof number)) {
        number = number << byte_bits | static_cast<unsigned char>(byte);
    }
    return number;
}

std::string check_version(std::int64_t version, const database_schema& schema)
{
    if (version <= static_cast<std::int64_t>(schema.migrations.size()))
        return {};
    return "its version is " + std::to_string(version) + ", this program knows only " +
           std::to_string(schema.migrations.size());
}

/// Looks at a file without SQLite, which would change it if another program has left a log.
std::string check_head(const std::string& path, const database_schema& schema)
{
    const unique_fd file{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)};
    struct stat status = {};
    if (!file || fstat(file.get(), &status) != 0)
        return system_text("cannot be read");
    char bytes[head_bytes];
    const std::string_view head{bytes, head_bytes};
    if (!S_ISREG(status.st_mode) ||
        pread(file.get(), bytes, head_bytes, 0) != static_cast<ssize_t>(head_bytes) ||
        !head.starts_with(head_mark))
        return "is no database";
    if (read_number(head, application_place) != schema.application_id)
        return "is a database of another program";
    return check_version(read_number(head, version_place), schema);
}

std::string connect_file(database& opened, const std::string& path)
{
    sqlite3* made = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    const int result = sqlite3_open_v2(path.c_str(), &made, flags, nullptr);
    opened = database{unique_connection{made}};
    if (result != SQLITE_OK)
        return made == nullptr ? "out of memory" : opened.error_text();
    sqlite3_busy_timeout(made, busy_wait_ms);
    sqlite3_db_config(made, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    return {};
}

/// Closing writes the log into the file, unless this file may not be touched yet.
void set_checkpoint_at_close(const database& opened, bool is_wanted)
{
    sqlite3_db_config(opened.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, is_wanted ? 0 : 1,
                      nullptr);
}

/// Reads the version, the head that the log may hold, and the schema.
std::string read_version(database& opened, std::int64_t& version)
{
    query asked{opened, "SELECT user_version, (SELECT count(*) FROM sqlite_schema)"
                        " FROM pragma_user_version"};
    if (asked.next())
        version = asked.integer(0);
    return asked.error();
}

std::string run_migration(database& opened, const char* script, std::size_t version)
{
    transaction step{opened, transaction_use::writing};
    std::string error = step.error();
    if (error.empty())
        error = database_run_script(opened, script);
    if (error.empty())
        error = database_run_script(opened, "PRAGMA user_version = " + std::to_string(version));
    return error.empty() ? step.commit() : error;
}

std::string run_migrations(database& opened, const database_schema& schema, std::int64_t version)
{
    for (auto next = static_cast<std::size_t>(version); next < schema.migrations.size(); ++next) {
        const std::string error = run_migration(opened, schema.migrations[next], next + 1);
        if (!error.empty())
            return "cannot be brought to version " + std::to_string(next + 1) + ": " + error;
    }
    return {};
}

/// Makes a database in an empty file, whole on disk when this returns.
std::string fill_file(const std::string& path, const database_schema& schema)
{
    database made;
    std::string error = connect_file(made, path);
    if (error.empty())
        error = database_run_script(made, making_settings);
    if (error.empty())
        error = database_run_script(made, "PRAGMA application_id = " +
                                              std::to_string(schema.application_id));
    return error.empty() ? run_migrations(made, schema, 0) : error;
}

/// Gives the made file its name, for good.
std::string name_file(const std::string& made, const std::string& path)
{
    if (rename(made.c_str(), path.c_str()) != 0)
        return system_text("cannot be named");
    const std::string folder = path.substr(0, path.find_last_of('/') + 1);
    const unique_fd opened{
        ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    return !opened || fsync(opened.get()) != 0 ? system_text("cannot be put on disk") : "";
}

std::string make_file(const std::string& path, const database_schema& schema)
{
    struct stat log = {};
    if (stat((path + "-wal").c_str(), &log) == 0 && log.st_size > 0)
        return "is missing, but its log " + path + "-wal is there";
    const std::string made = path + ".new";
    unlink(made.c_str()); // of a start that was killed
    const unique_fd file{::open(made.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, private_mode)};
    if (!file)
        return system_text("cannot be made");
    std::string error = fill_file(made, schema);
    if (error.empty())
        error = name_file(made, path);
    if (!error.empty())
        unlink(made.c_str());
    return error;
}

std::string prepare_connection(database& opened, const std::string& path,
                               const database_schema& schema)
{
    std::string error = connect_file(opened, path);
    if (!error.empty())
        return error;
    set_checkpoint_at_close(opened, false);
    std::int64_t version = 0;
    error = read_version(opened, version);
    if (error.empty())
        error = check_version(version, schema);
    if (error.empty())
        error = database_run_script(opened, writing_settings);
    if (error.empty())
        error = run_migrations(opened, schema, version);
    if (error.empty())
        set_checkpoint_at_close(opened, true);
    return error;
}

std::string open_file(database& opened, const std::string& path, const database_schema& schema)
{
    if (access(path.c_str(), F_OK) != 0 && errno == ENOENT) {
        std::string error = make_file(path, schema);
        if (!error.empty())
            return error;
    }
    std::string error = check_head(path, schema);
    return error.empty() ? prepare_connection(opened, path, schema) : error;
}

/// An error with the path before it; nothing stays open.
std::string refuse_file(database& opened, const std::string& path, const std::string& error)
{
    opened = {};
    return path + ": " + error;
}

} // namespace

std::string database_open(database& opened, const std::string& path, const database_schema& schema)
{
    const std::string error = open_file(opened, path, schema);
    return error.empty() ? "" : refuse_file(opened, path, error);
}

std::string database_open_for_reading(database& opened, const std::string& path)
{
    std::string error = connect_file(opened, path);
    if (error.empty())
        error = database_run_script(opened, "PRAGMA query_only = ON");
    return error.empty() ? "" : refuse_file(opened, path, error);
}

} // namespace tovrik
