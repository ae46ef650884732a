// storage_kill_test.cpp - a server that is killed at any moment has lost nothing that it
// acknowledged.
#include "unit/storage_fixture.hpp"

#include "server/base/random_source.hpp"
#include "server/protocol/packet.hpp"
#include "server/storage/kept_messages.hpp"
#include "server/storage/kept_pagers.hpp"
#include "server/storage/kept_subscriptions.hpp"
#include "server/storage/kept_updates.hpp"

#include <csignal>
#include <cstdlib>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using tovrik::database;

/// Each number is kept as one of these in turn.
enum class kept_kind { update, pager, subscription, message };
constexpr int kept_kinds = 4;

/// After so many kills, the next server begins without a database.
constexpr int kills_per_folder = 10;

/// Enough waiting jobs for several in each transaction.
constexpr std::size_t waiting_jobs = 16;

/// Keeps the updates, lists and subscriptions within their limits; later ones replace earlier ones.
constexpr int different_names = 400;

std::string name_of(int number)
{
    return "N" + std::to_string(number % different_names);
}

std::string keep_number(database& in, int number)
{
    bool is_kept = false;
    tovrik::mail_subscription subscription;
    tovrik::subscription_result result{};
    switch (static_cast<kept_kind>(number % kept_kinds)) {
    case kept_kind::update:
        return update_keep(in, tovrik::kind::add_airport,
                           name_of(number) + "\t" + std::to_string(number), is_kept);
    case kept_kind::pager:
        return pager_keep(in, {name_of(number), 1}, {name_of(number), "", ""}, is_kept);
    case kept_kind::subscription:
        return subscription_keep(in, name_of(number), number, subscription, result);
    case kept_kind::message:
        return message_keep(in, {.registration = "D-KILL", .message_number = name_of(number)},
                            number);
    }
    return "a kind that is not known";
}

/// A server that keeps one number after the other and writes each into the pipe when it is on disk.
/// It ends only by a signal.
[[noreturn]] void keep_numbers(const std::string& folder, int first, int acknowledged)
{
    tovrik::storage kept;
    if (!kept.open(folder, nothing_to_prepare).empty())
        _exit(EXIT_FAILURE);
    for (int number = first;;) {
        while (kept.waiting_writes() < waiting_jobs) {
            kept.write({.work = [number](database& in) { return keep_number(in, number); },
                        .done =
                            [number, acknowledged](const std::string& error) {
                                if (!error.empty() ||
                                    write(acknowledged, &number, sizeof number) != sizeof number)
                                    _exit(EXIT_FAILURE);
                            }});
            ++number;
        }
        pollfd wait{.fd = kept.event_fd(), .events = POLLIN, .revents = 0};
        ::poll(&wait, 1, -1);
        kept.run_finished();
    }
}

class killed_server : public testing::Test
{
protected:
    /// Starts a server that keeps numbers from `next` on, and kills it after a while. Notes what
    /// it has acknowledged.
    void run_and_kill(const std::string& folder, unsigned wait_us)
    {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            keep_numbers(folder, next, ends[1]);
        close(ends[1]);
        usleep(wait_us);
        EXPECT_EQ(kill(child, SIGKILL), 0);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status)) << "it failed before the kill";
        for (int number = 0; read(ends[0], &number, sizeof number) == sizeof number;)
            note(number);
        close(ends[0]);
        next += 1 + static_cast<int>(waiting_jobs);
    }
    void note(int number)
    {
        ++acknowledged;
        next = std::max(next, number);
        if (static_cast<kept_kind>(number % kept_kinds) == kept_kind::message)
            ++messages;
        else
            latest[{number % kept_kinds, name_of(number)}] = number;
    }
    void expect_all(database& in)
    {
        tovrik::reference_data reference;
        tovrik::pager_lists lists;
        EXPECT_EQ(updates_read(in, reference), "");
        EXPECT_EQ(pagers_read(in, lists), "");
        for (const auto& [what, number] : latest) {
            const auto kind = static_cast<kept_kind>(what.first);
            const std::string& name = what.second;
            if (kind == kept_kind::update) {
                const auto* entry = reference.find(tovrik::kind::add_airport, name);
                ASSERT_NE(entry, nullptr) << name;
                EXPECT_GE(std::stoi(entry->fields.at(1)), number);
            } else if (kind == kept_kind::pager) {
                EXPECT_EQ(lists.list({name, 1}).size(), 1U) << name;
            } else {
                tovrik::mail_subscription found;
                EXPECT_EQ(subscription_read(in, name, found), "");
                EXPECT_NE(found.code, 0) << name;
            }
        }
        expect_true_counts(in);
    }
    void expect_true_counts(database& in)
    {
        std::uint64_t total = 0;
        std::uint32_t contacts = 0;
        EXPECT_EQ(messages_count(in, total), "");
        EXPECT_EQ(contacts_count(in, "D-KILL", contacts), "");
        EXPECT_GE(total, messages);
        EXPECT_EQ(contacts, total);
        EXPECT_EQ(number_in(in, "SELECT count(*) FROM messages"), static_cast<std::int64_t>(total));
    }
    void forget()
    {
        latest.clear();
        messages = 0;
    }

    int next = 0;
    std::size_t acknowledged = 0;
    std::uint64_t messages = 0;
    std::map<std::pair<int, std::string>, int> latest; ///< acknowledged, by kind and name
};

/// How often to kill: STORAGE_KILLS, or a few times.
int number_of_kills()
{
    const char* wanted = std::getenv("STORAGE_KILLS");
    return wanted != nullptr ? std::atoi(wanted) : 30;
}

TEST_F(killed_server, has_lost_nothing_that_it_acknowledged)
{
    tovrik::random_source random{1};
    std::optional<temp_home> home;
    for (int kills = 0; kills < number_of_kills(); ++kills) {
        if (kills % kills_per_folder == 0) {
            home.emplace();
            forget();
        }
        const std::string folder = home->path_of("state");
        run_and_kill(folder, random.below(100000));
        database in;
        if (access((folder + "/tovrikd.sqlite").c_str(), F_OK) != 0 && latest.empty())
            continue; // killed before there was a database
        ASSERT_EQ(database_open(in, folder + "/tovrikd.sqlite", tovrik::storage_schema()), "");
        ASSERT_EQ(integrity_of(in), "ok");
        expect_all(in);
        if (HasFailure())
            break;
    }
    EXPECT_GT(acknowledged, 0U) << "the servers had time for something";
}

} // namespace
