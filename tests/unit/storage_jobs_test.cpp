// storage_jobs_test.cpp - the threads that write and read what a server keeps.
#include "unit/storage_fixture.hpp"

#include "server/base/limits.hpp"
#include "server/base/quiet_thread.hpp"
#include "server/protocol/packet.hpp"
#include "server/storage/kept_updates.hpp"
#include "server/storage/kept_uuid.hpp"

#include <atomic>
#include <csignal>
#include <future>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>

namespace
{

using tovrik::database;

std::string keep_airline(database& in, const std::string& code)
{
    bool is_kept = false;
    std::string error =
        update_keep(in, tovrik::kind::add_airline, code + "\tName of " + code, is_kept);
    return error.empty() && !is_kept ? "refused" : error;
}

class storage_jobs : public testing::Test
{
protected:
    storage_jobs()
    {
        EXPECT_EQ(kept.open(folder, nothing_to_prepare), "");
    }
    std::string write_airline(const std::string& code)
    {
        return write_one(kept, [code](database& in) { return keep_airline(in, code); });
    }
    std::int64_t airlines()
    {
        std::int64_t count = -1;
        EXPECT_TRUE(kept.read({.work =
                                   [&count](database& in) {
                                       count = number_in(in, "SELECT count(*) FROM updates");
                                       return std::string{};
                                   },
                               .done = {}}));
        EXPECT_TRUE(await_finished(kept));
        return count;
    }
    /// Holds the writing thread up until the gate is opened.
    void write_gate(std::shared_future<void> gate)
    {
        std::promise<void> begun;
        auto reached = begun.get_future();
        EXPECT_TRUE(kept.write({.work =
                                    [gate = std::move(gate), &begun](database&) {
                                        begun.set_value();
                                        gate.wait();
                                        return std::string{};
                                    },
                                .done = {}}));
        reached.wait();
    }

    temp_home home;
    std::string folder = home.path_of("state");
    tovrik::storage kept;
};

TEST_F(storage_jobs, keep_what_they_are_given_in_a_private_folder)
{
    EXPECT_EQ(write_airline("LH"), "");
    EXPECT_EQ(airlines(), 1);
    struct stat status = {};
    ASSERT_EQ(stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U);
    EXPECT_TRUE(kept.close(default_patience));
    EXPECT_EQ(home.files(), (std::vector<std::string>{"state/", "state/tovrikd.sqlite"}));
    ASSERT_EQ(kept.open(folder, nothing_to_prepare), "");
    EXPECT_EQ(airlines(), 1);
}

TEST_F(storage_jobs, are_finished_in_the_thread_that_asks_and_when_it_asks)
{
    std::thread::id worker;
    std::thread::id finisher;
    ASSERT_TRUE(kept.write(
        {.work =
             [&worker](database&) {
                 worker = std::this_thread::get_id();
                 return std::string{};
             },
         .done = [&finisher](const std::string&) { finisher = std::this_thread::get_id(); }}));
    pollfd wait{.fd = kept.event_fd(), .events = POLLIN, .revents = 0};
    ASSERT_EQ(::poll(&wait, 1, static_cast<int>(default_patience.count())), 1);
    EXPECT_EQ(finisher, std::thread::id{});
    EXPECT_EQ(kept.waiting_writes(), 1U);
    kept.run_finished();
    EXPECT_EQ(finisher, std::this_thread::get_id());
    EXPECT_NE(worker, finisher);
    EXPECT_EQ(kept.waiting_writes(), 0U);
    EXPECT_EQ(::poll(&wait, 1, 0), 0) << "nothing waits any more";
}

TEST_F(storage_jobs, that_wait_together_are_finished_together)
{
    std::promise<void> gate;
    write_gate(gate.get_future().share());
    std::atomic<int> worked = 0;
    std::vector<int> seen;
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(kept.write({.work =
                                    [&worked](database&) {
                                        ++worked;
                                        return std::string{};
                                    },
                                .done = [&](const std::string&) { seen.push_back(worked); }}));
    }
    gate.set_value();
    ASSERT_TRUE(await_finished(kept));
    EXPECT_EQ(seen, std::vector<int>(50, 50));
}

TEST_F(storage_jobs, that_fail_do_not_undo_the_others)
{
    std::promise<void> gate;
    write_gate(gate.get_future().share());
    std::vector<std::string> errors;
    const auto add = [&](std::function<std::string(database&)> work) {
        ASSERT_TRUE(
            kept.write({.work = std::move(work),
                        .done = [&errors](const std::string& error) { errors.push_back(error); }}));
    };
    add([](database& in) { return keep_airline(in, "LH"); });
    add([](database& in) { return keep_airline(in, "AF") + "changed its mind"; });
    add([](database& in) { return tovrik::database_run(in, "INSERT INTO nowhere VALUES (1)"); });
    add([](database& in) {
        keep_airline(in, "BA");
        throw std::runtime_error{"thrown"};
        return std::string{};
    });
    add([](database& in) { return keep_airline(in, "KL"); });
    gate.set_value();
    ASSERT_TRUE(await_finished(kept));
    EXPECT_EQ(errors, (std::vector<std::string>{"", "changed its mind", "no such table: nowhere",
                                                "thrown", ""}));
    EXPECT_EQ(airlines(), 2);
}

TEST_F(storage_jobs, get_an_error_if_their_transaction_is_undone)
{
    std::promise<void> gate;
    write_gate(gate.get_future().share());
    std::vector<std::string> errors;
    for (const char* code : {"LH", "", "KL"}) {
        ASSERT_TRUE(
            kept.write({.work =
                            [code = std::string{code}](database& in) {
                                return code.empty() ? tovrik::database_run(in, "ROLLBACK")
                                                    : keep_airline(in, code);
                            },
                        .done = [&errors](const std::string& error) { errors.push_back(error); }}));
    }
    gate.set_value();
    ASSERT_TRUE(await_finished(kept));
    ASSERT_EQ(errors.size(), 3U);
    for (const std::string& error : errors)
        EXPECT_NE(error, "");
    EXPECT_EQ(airlines(), 0) << "the last one did not run outside of the transaction";
    EXPECT_EQ(write_airline("AF"), "");
}

TEST_F(storage_jobs, are_refused_when_too_many_wait)
{
    std::promise<void> gate;
    write_gate(gate.get_future().share());
    const auto nothing = [](database&) { return std::string{}; };
    for (std::size_t i = 1; i < tovrik::max_storage_writes; ++i)
        ASSERT_TRUE(kept.write({.work = nothing, .done = {}}));
    EXPECT_FALSE(kept.write({.work = nothing, .done = [](const std::string&) { FAIL(); }}));
    EXPECT_TRUE(kept.read({.work = nothing, .done = {}})) << "reading has a queue of its own";
    gate.set_value();
    ASSERT_TRUE(await_finished(kept));
    EXPECT_TRUE(kept.write({.work = nothing, .done = {}}));
    for (std::size_t i = 0; i < tovrik::max_storage_reads; ++i)
        ASSERT_TRUE(kept.read({.work = nothing, .done = {}}));
    EXPECT_FALSE(kept.read({.work = nothing, .done = {}})) << "none was handed out";
    EXPECT_TRUE(await_finished(kept));
}

TEST_F(storage_jobs, read_while_others_write_and_see_one_moment)
{
    EXPECT_EQ(write_airline("LH"), "");
    std::promise<void> first_look;
    std::promise<void> written;
    std::int64_t before = -1;
    std::int64_t after = -1;
    ASSERT_TRUE(kept.read({.work =
                               [&](database& in) {
                                   before = number_in(in, "SELECT count(*) FROM updates");
                                   first_look.set_value();
                                   written.get_future().wait();
                                   after = number_in(in, "SELECT count(*) FROM updates");
                                   return std::string{};
                               },
                           .done = {}}));
    first_look.get_future().wait();
    ASSERT_TRUE(kept.write({.work = [](database& in) { return keep_airline(in, "AF"); },
                            .done =
                                [&written](const std::string& error) {
                                    EXPECT_EQ(error, "");
                                    written.set_value();
                                }}));
    EXPECT_TRUE(await_finished(kept));
    EXPECT_EQ(before, 1);
    EXPECT_EQ(after, 1);
    EXPECT_EQ(airlines(), 2);
}

TEST_F(storage_jobs, may_start_others_when_they_are_finished)
{
    int finished = 0;
    ASSERT_TRUE(kept.write({.work = nothing_to_prepare, .done = [&](const std::string&) {
                                ++finished;
                                EXPECT_TRUE(
                                    kept.write({.work = nothing_to_prepare,
                                                .done = [&](const std::string&) { ++finished; }}));
                            }}));
    EXPECT_TRUE(await_finished(kept));
    EXPECT_EQ(finished, 2);
}

TEST_F(storage_jobs, that_wait_at_the_end_are_done)
{
    std::promise<void> gate;
    write_gate(gate.get_future().share());
    int done = 0;
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(kept.write(
            {.work = [i](database& in) { return keep_airline(in, "A" + std::to_string(i)); },
             .done = [&done](const std::string& error) { done += error.empty() ? 1 : 0; }}));
    }
    gate.set_value();
    EXPECT_TRUE(kept.close(default_patience));
    kept.run_finished();
    EXPECT_EQ(done, 100);
    EXPECT_FALSE(kept.write({.work = nothing_to_prepare, .done = {}}));
    ASSERT_EQ(kept.open(folder, nothing_to_prepare), "");
    EXPECT_EQ(airlines(), 100);
}

TEST_F(storage_jobs, that_take_too_long_at_the_end_are_interrupted)
{
    constexpr tovrik::sql_text endless = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL"
                                         " SELECT i + 1 FROM n) SELECT count(*) FROM n";
    std::vector<std::string> errors;
    const auto note = [&errors](const std::string& error) { errors.push_back(error); };
    std::promise<void> reading;
    std::promise<void> writing;
    ASSERT_TRUE(kept.read({.work =
                               [&reading, endless](database& in) {
                                   reading.set_value();
                                   return tovrik::database_run(in, endless);
                               },
                           .done = note}));
    ASSERT_TRUE(kept.write({.work =
                                [&writing, endless](database& in) {
                                    writing.set_value();
                                    return tovrik::database_run(in, endless);
                                },
                            .done = note}));
    writing.get_future().wait();
    reading.get_future().wait();
    ASSERT_TRUE(kept.write({.work = nothing_to_prepare, .done = note}));
    EXPECT_TRUE(kept.close(std::chrono::milliseconds{50}));
    kept.run_finished();
    EXPECT_EQ(errors,
              (std::vector<std::string>{"interrupted", "interrupted", "the server has stopped"}));
}

TEST_F(storage_jobs, that_are_held_up_by_the_system_do_not_hold_up_the_end)
{
    std::promise<void> gate;
    write_gate(gate.get_future().share());
    EXPECT_FALSE(kept.close(std::chrono::milliseconds{1}));
    EXPECT_EQ(kept.waiting_writes(), 1U);
    tovrik::storage second;
    EXPECT_EQ(second.open(folder, nothing_to_prepare), folder + ": is in use by another server");
    gate.set_value();
    EXPECT_TRUE(await_finished(kept));
    // The thread that was left alone closes the database at its end.
    const auto deadline = std::chrono::steady_clock::now() + default_patience;
    while (home.read_file("state/tovrikd.sqlite-wal") &&
           std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_FALSE(home.read_file("state/tovrikd.sqlite-wal"));
}

TEST_F(storage_jobs, have_the_folder_to_themselves)
{
    tovrik::storage second;
    EXPECT_EQ(second.open(folder, nothing_to_prepare), folder + ": is in use by another server");
    EXPECT_FALSE(second.write({.work = nothing_to_prepare, .done = {}}));
    EXPECT_EQ(write_airline("LH"), "");
    EXPECT_TRUE(kept.close(default_patience));
    EXPECT_EQ(second.open(folder, nothing_to_prepare), "");
}

TEST_F(storage_jobs, are_refused_without_a_folder_or_with_a_database_that_is_refused)
{
    tovrik::storage other;
    const std::string missing = home.path_of("no/where");
    EXPECT_EQ(other.open(missing, nothing_to_prepare), missing + ": No such file or directory");
    home.write_file("file", "");
    EXPECT_EQ(other.open(home.path_of("file"), nothing_to_prepare),
              home.path_of("file") + ": Not a directory");
    home.make_folder("broken");
    home.write_file("broken/tovrikd.sqlite", "nonsense");
    const std::string path = home.path_of("broken/tovrikd.sqlite");
    EXPECT_EQ(other.open(home.path_of("broken"), nothing_to_prepare), path + ": is no database");
    EXPECT_EQ(home.read_file("broken/tovrikd.sqlite"), "nonsense");
    EXPECT_EQ(other.open(home.path_of("new"), [](database&) { return std::string{"no luck"}; }),
              home.path_of("new/tovrikd.sqlite") + ": no luck");
    EXPECT_FALSE(other.write({.work = nothing_to_prepare, .done = {}}));
    EXPECT_EQ(other.open(home.path_of("new"), nothing_to_prepare), "");
}

TEST_F(storage_jobs, find_the_identity_of_the_server_from_the_start)
{
    std::vector<std::string> found(3);
    for (const std::size_t start : {0U, 1U}) {
        kept.close(default_patience);
        ASSERT_EQ(
            kept.open(folder, [&](database& in) { return uuid_read_or_make(in, found[start]); }),
            "");
    }
    tovrik::storage other;
    ASSERT_EQ(other.open(home.path_of("other"),
                         [&](database& in) { return uuid_read_or_make(in, found[2]); }),
              "");
    EXPECT_EQ(found[0].size(), 36U);
    EXPECT_EQ(found[0][14], '4');
    EXPECT_EQ(found[0], found[1]);
    EXPECT_NE(found[0], found[2]);
}

TEST(quiet_thread, gets_no_signals)
{
    std::thread thread;
    sigset_t blocked = {};
    sigset_t before = {};
    sigset_t after = {};
    pthread_sigmask(SIG_BLOCK, nullptr, &before);
    ASSERT_EQ(tovrik::quiet_thread_start(
                  thread, [&blocked] { pthread_sigmask(SIG_BLOCK, nullptr, &blocked); }),
              "");
    thread.join();
    pthread_sigmask(SIG_BLOCK, nullptr, &after);
    for (const int number : {SIGTERM, SIGHUP, SIGINT, SIGUSR1}) {
        EXPECT_EQ(sigismember(&blocked, number), 1) << number;
        EXPECT_EQ(sigismember(&before, number), sigismember(&after, number)) << number;
    }
}

} // namespace
