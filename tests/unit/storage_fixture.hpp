// storage_fixture.hpp - a database in a folder of its own, for one test.
#pragma once

#include "server/storage/database_file.hpp"
#include "server/storage/storage.hpp"
#include "server/storage/storage_schema.hpp"
#include "support/patience.hpp"
#include "support/temp_home.hpp"

#include <array>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <utility>

/// Texts that would do harm if they became SQL, or that a text may not survive.
inline const std::array hostile_texts = {
    std::string{"'; DROP TABLE messages; --"},
    std::string{"\"quoted\" 'twice' `and` [so] \\ %s ?1 :name"},
    std::string{"a\0b\0", 4},
    std::string{"\0", 1},
    std::string{"\x80\x9F\xA0\xC3\x28\xFF\xFE"},
    std::string{"line\nfeed\r\ttab"},
    std::string{"123"},
    std::string{"x'4142'"},
    std::string(5000, 'w'),
};

/// What SQLite itself says of a database; "ok" if nothing is wrong.
inline std::string integrity_of(tovrik::database& opened)
{
    tovrik::query check{opened, "SELECT integrity_check FROM pragma_integrity_check"};
    const std::string said = check.next() ? check.text(0) : check.error();
    tovrik::query keys{opened, "SELECT count(*) FROM pragma_foreign_key_check"};
    return keys.next() && keys.integer(0) == 0 ? said : "a foreign key without its row";
}

/// The first column of the first row of a statement.
template <typename... bound_value>
std::int64_t number_in(tovrik::database& opened, tovrik::sql_text sql, const bound_value&... values)
{
    tovrik::query asked{opened, sql, values...};
    EXPECT_TRUE(asked.next()) << sql.view() << asked.error();
    return asked.integer(0);
}

/// An open database of the server's schema.
class storage_database : public testing::Test
{
protected:
    storage_database()
    {
        EXPECT_EQ(database_open(in, home.path_of("tovrikd.sqlite"), tovrik::storage_schema()), "");
    }
    ~storage_database() override
    {
        EXPECT_EQ(integrity_of(in), "ok");
    }
    storage_database(const storage_database&) = delete;
    storage_database& operator=(const storage_database&) = delete;

    /// Closes the file and opens it again, as at the server's next start.
    void open_again()
    {
        in = {};
        EXPECT_EQ(database_open(in, home.path_of("tovrikd.sqlite"), tovrik::storage_schema()), "");
    }

    temp_home home;
    tovrik::database in;
};

inline std::string nothing_to_prepare(tovrik::database&)
{
    return {};
}

/// Hands finished jobs out until none is left. False if that does not happen.
inline bool await_finished(tovrik::storage& kept)
{
    const auto deadline = std::chrono::steady_clock::now() + default_patience;
    while (kept.waiting_writes() + kept.waiting_reads() > 0) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        pollfd wait{.fd = kept.event_fd(), .events = POLLIN, .revents = 0};
        ::poll(&wait, 1, 100);
        kept.run_finished();
    }
    return true;
}

/// Does one job that writes. Returns its error.
inline std::string write_one(tovrik::storage& kept,
                             std::function<std::string(tovrik::database&)> work)
{
    std::string result = "not finished";
    const bool is_taken = kept.write(
        {.work = std::move(work), .done = [&result](const std::string& error) { result = error; }});
    EXPECT_TRUE(is_taken && await_finished(kept));
    return result;
}
