// storage_file_test.cpp - opening the file of a database: making, migrating, refusing.
#include "unit/storage_fixture.hpp"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr std::uint32_t test_application = 0x74657374;
constexpr const char* steps[] = {
    "CREATE TABLE things(name BLOB NOT NULL) STRICT;",
    "ALTER TABLE things ADD COLUMN size INTEGER NOT NULL DEFAULT 7;"
    "CREATE TABLE places(thing INTEGER NOT NULL);",
    "UPDATE things SET size = size + 1; CREATE INDEX by_size ON things(size);",
};
constexpr const char* broken_steps[] = {steps[0], steps[1],
                                        "UPDATE things SET size = 99; CREATE NONSENSE;"};

tovrik::database_schema schema_of(std::size_t versions)
{
    return {test_application, std::span{steps}.first(versions)};
}

class database_file : public testing::Test
{
protected:
    std::string open(const tovrik::database_schema& schema)
    {
        opened = {};
        return database_open(opened, path, schema);
    }
    /// Makes a file of two versions with one thing in it, and closes it.
    void make()
    {
        EXPECT_EQ(open(schema_of(2)), "");
        EXPECT_EQ(tovrik::database_run(opened, "INSERT INTO things(name) VALUES (?1)", "one"), "");
        opened = {};
    }
    std::string bytes() const
    {
        return home.read_file("file").value_or("none");
    }
    /// Tries to open a file with these bytes, which must be refused for `reason` and stay.
    void expect_refused(const std::string& content, const std::string& reason)
    {
        home.write_file("file", content);
        EXPECT_EQ(open(schema_of(2)), path + ": " + reason);
        EXPECT_FALSE(opened.is_open());
        EXPECT_EQ(bytes(), content);
        EXPECT_EQ(home.read_file("file-wal").value_or(""), "");
    }

    temp_home home;
    std::string path = home.path_of("file");
    tovrik::database opened;
};

TEST_F(database_file, is_made_private_and_with_its_identity)
{
    const mode_t before = umask(0);
    EXPECT_EQ(open(schema_of(2)), "");
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
    EXPECT_EQ(number_in(opened, "SELECT application_id FROM pragma_application_id"),
              test_application);
    EXPECT_EQ(number_in(opened, "SELECT user_version FROM pragma_user_version"), 2);
    EXPECT_EQ(number_in(opened, "SELECT synchronous FROM pragma_synchronous"), 2) << "full";
    EXPECT_EQ(number_in(opened, "SELECT foreign_keys FROM pragma_foreign_keys"), 1);
    EXPECT_EQ(number_in(opened, "SELECT count(*) FROM pragma_journal_mode"
                                " WHERE journal_mode = 'wal'"),
              1);
    EXPECT_EQ(tovrik::database_run(opened, "INSERT INTO places VALUES (1)"), "");
    ASSERT_EQ(stat((path + "-wal").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U) << "the log as well";
    opened = {};
    EXPECT_EQ(home.files(), std::vector<std::string>{"file"}) << "closing tidies up";
}

TEST_F(database_file, is_made_anew_after_a_start_that_was_killed)
{
    home.write_file("file.new", "half a database");
    EXPECT_EQ(open(schema_of(2)), "");
    EXPECT_EQ(integrity_of(opened), "ok");
    EXPECT_FALSE(home.read_file("file.new"));
}

TEST_F(database_file, keeps_what_is_in_it)
{
    make();
    EXPECT_EQ(open(schema_of(2)), "");
    EXPECT_EQ(number_in(opened, "SELECT size FROM things"), 7);
}

TEST_F(database_file, is_migrated_step_by_step)
{
    EXPECT_EQ(open(schema_of(1)), "");
    EXPECT_EQ(tovrik::database_run(opened, "INSERT INTO things VALUES (?1)", "old"), "");
    EXPECT_EQ(open(schema_of(3)), "");
    EXPECT_EQ(number_in(opened, "SELECT size FROM things WHERE name = ?1", "old"), 8);
    EXPECT_EQ(number_in(opened, "SELECT user_version FROM pragma_user_version"), 3);
    EXPECT_EQ(integrity_of(opened), "ok");
}

TEST_F(database_file, stays_at_the_last_whole_version_if_a_migration_fails)
{
    EXPECT_EQ(open(schema_of(1)), "");
    EXPECT_EQ(tovrik::database_run(opened, "INSERT INTO things VALUES (?1)", "old"), "");
    EXPECT_EQ(open({test_application, broken_steps}),
              path + ": cannot be brought to version 3: near \"NONSENSE\": syntax error");
    EXPECT_FALSE(opened.is_open());
    EXPECT_EQ(open(schema_of(2)), "");
    EXPECT_EQ(number_in(opened, "SELECT user_version FROM pragma_user_version"), 2);
    EXPECT_EQ(number_in(opened, "SELECT size FROM things"), 7) << "the failed step was undone";
}

TEST_F(database_file, is_not_made_if_its_first_migrations_fail)
{
    EXPECT_NE(open({test_application, broken_steps}), "");
    EXPECT_TRUE(home.files().empty());
}

TEST_F(database_file, is_refused_if_it_is_no_database)
{
    expect_refused("", "is no database");
    expect_refused("a text", "is no database");
    expect_refused(std::string(5000, '\0'), "is no database");
    expect_refused(std::string("SQLite format 3\0", 16), "is no database");
}

TEST_F(database_file, is_refused_if_it_is_newer_or_another_programs)
{
    make();
    const std::string whole = bytes();
    std::string changed = whole;
    changed[63] = 3;
    expect_refused(changed, "its version is 3, this program knows only 2");
    changed[60] = '\x7F';
    expect_refused(changed, "its version is 2130706435, this program knows only 2");
    changed = whole;
    changed[71] = 'x';
    expect_refused(changed, "is a database of another program");
}

TEST_F(database_file, is_refused_if_only_its_log_says_that_it_is_newer)
{
    make();
    tovrik::database newer;
    ASSERT_EQ(database_open(newer, path, schema_of(3)), "");
    temp_home other;
    for (const char* name : {"file", "file-wal"})
        other.write_file(name, *home.read_file(name));
    const auto before = other.files();
    const auto content = other.read_file("file");
    tovrik::database refused;
    EXPECT_EQ(database_open(refused, other.path_of("file"), schema_of(2)),
              other.path_of("file") + ": its version is 3, this program knows only 2");
    EXPECT_EQ(other.read_file("file"), content);
    EXPECT_EQ(other.read_file("file-wal"), home.read_file("file-wal"));
    EXPECT_EQ(other.files().front(), "file");
}

TEST_F(database_file, is_refused_if_it_is_broken)
{
    make();
    const std::string whole = bytes();
    ASSERT_GT(whole.size(), 8192U);
    constexpr const char* malformed = "database disk image is malformed";
    expect_refused(whole.substr(0, 4096), malformed);
    expect_refused(whole.substr(0, whole.size() - 4096), malformed);
    expect_refused(whole.substr(0, 100), malformed);
    std::string changed = whole;
    changed.replace(100, 3900, 3900, '\xAA'); // the page of the schema
    expect_refused(changed, malformed);
}

TEST_F(database_file, is_refused_if_it_cannot_be_read_or_made)
{
    ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
    EXPECT_EQ(open(schema_of(1)), path + ": is no database");
    path = home.path_of("missing/file");
    EXPECT_EQ(open(schema_of(1)), path + ": cannot be made: No such file or directory");
}

TEST_F(database_file, is_not_made_beside_the_log_of_a_lost_one)
{
    home.write_file("file-wal", "");
    EXPECT_EQ(open(schema_of(1)), "") << "an empty log says nothing";
    opened = {};
    ASSERT_EQ(unlink(path.c_str()), 0);
    home.write_file("file-wal", "what is left");
    EXPECT_EQ(open(schema_of(1)), path + ": is missing, but its log " + path + "-wal is there");
    EXPECT_EQ(home.files(), std::vector<std::string>{"file-wal"});
}

TEST_F(database_file, is_only_read_by_a_connection_for_reading)
{
    make();
    EXPECT_EQ(open(schema_of(2)), "");
    tovrik::database reading;
    ASSERT_EQ(database_open_for_reading(reading, path), "");
    EXPECT_EQ(number_in(reading, "SELECT count(*) FROM things"), 1);
    EXPECT_EQ(tovrik::database_run(reading, "DELETE FROM things"),
              "attempt to write a readonly database");
}

class database_values : public database_file
{
protected:
    database_values()
    {
        EXPECT_EQ(open(schema_of(2)), "");
    }
    std::int64_t count()
    {
        return number_in(opened, "SELECT count(*) FROM things");
    }
    std::string add(std::string_view name)
    {
        return tovrik::database_run(opened, "INSERT INTO things(name) VALUES (?1)", name);
    }
};

TEST_F(database_values, come_back_as_they_were)
{
    for (const std::string& text : hostile_texts)
        EXPECT_EQ(add(text), "");
    EXPECT_EQ(add(""), "") << "an empty text is not NULL";
    EXPECT_EQ(open(schema_of(2)), "");
    tovrik::query row{opened, "SELECT name, length(name) FROM things ORDER BY rowid"};
    for (const std::string& text : hostile_texts) {
        ASSERT_TRUE(row.next());
        EXPECT_EQ(row.text(0), text);
        EXPECT_EQ(row.integer(1), static_cast<std::int64_t>(text.size()));
    }
    ASSERT_TRUE(row.next());
    EXPECT_EQ(row.text(0), "");
    EXPECT_FALSE(row.next());
    for (const std::string& text : hostile_texts)
        EXPECT_EQ(number_in(opened, "SELECT count(*) FROM things WHERE name = ?1", text), 1);
}

TEST_F(database_values, say_why_they_are_not_taken)
{
    tovrik::query nonsense{opened, "SELECT * FROM nowhere", 1};
    EXPECT_FALSE(nonsense.next());
    EXPECT_EQ(nonsense.error(), "no such table: nowhere");
    EXPECT_EQ(tovrik::database_run(opened, "INSERT INTO places VALUES (NULL)"),
              "NOT NULL constraint failed: places.thing");
    EXPECT_NE(tovrik::database_run(opened, "INSERT INTO places VALUES (?1)", 1, 2), "")
        << "one value too many";
    EXPECT_EQ(number_in(opened, "SELECT count(*) FROM places"), 0);
}

TEST_F(database_values, may_be_asked_for_twice_at_the_same_time)
{
    EXPECT_EQ(add("one"), "");
    EXPECT_EQ(add("two"), "");
    constexpr tovrik::sql_text names = "SELECT name FROM things ORDER BY rowid";
    tovrik::query outer{opened, names};
    ASSERT_TRUE(outer.next());
    tovrik::query inner{opened, names};
    ASSERT_TRUE(inner.next());
    EXPECT_EQ(inner.text(0), "one");
    ASSERT_TRUE(outer.next());
    EXPECT_EQ(outer.text(0), "two");
}

TEST_F(database_values, are_undone_with_a_transaction_that_is_not_committed)
{
    {
        const tovrik::transaction undone{opened, tovrik::transaction_use::writing};
        EXPECT_EQ(add("one"), "");
        EXPECT_EQ(count(), 1);
    }
    EXPECT_EQ(count(), 0);
    tovrik::transaction kept{opened, tovrik::transaction_use::writing};
    EXPECT_EQ(add("one"), "");
    {
        const tovrik::savepoint undone{opened};
        EXPECT_EQ(add("two"), "");
    }
    tovrik::savepoint released{opened};
    EXPECT_EQ(add("three"), "");
    EXPECT_EQ(released.release(), "");
    EXPECT_EQ(kept.commit(), "");
    EXPECT_EQ(number_in(opened, "SELECT count(*) FROM things WHERE name <> ?1", "two"), 2);
    EXPECT_EQ(count(), 2);
}

} // namespace
