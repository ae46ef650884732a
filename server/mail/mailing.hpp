// mailing.hpp - sends the mails about each day to those who have subscribed to them.
//
// One mail after the other goes to the mail program. That it was taken is written into the database
// before the next one begins. So a server that is killed has lost none, and at most the one that
// was under way is sent twice, with the same identity. Nothing here waits: the storage's threads
// make the reports, and the loop watches the mail program.
//
// A mail that is not taken is tried again, after pauses that grow, until the next day's are due.
#pragma once

#include "server/base/even_clock.hpp"
#include "server/base/line_writer.hpp"
#include "server/mail/mail_child.hpp"
#include "server/mail/mail_report.hpp"
#include "server/mail/mail_text.hpp"
#include "server/storage/kept_subscriptions.hpp"
#include "server/storage/storage.hpp"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tovrik
{

/// What the owner of the server can choose.
struct mail_options {
    bool is_offered = false;
    std::vector<std::string> command = {}; ///< see mail_command_words
    std::string from = {};                 ///< is_mail_address
    unsigned at_minute = 0; ///< of the day in UTC, at which mails about the day before go out
    std::vector<std::string> never_to =
        {}; ///< addresses that get no mail, whatever they subscribed to
    bool operator==(const mail_options&) const = default;
};

/// How long things take.
struct mail_patience {
    std::chrono::milliseconds program = std::chrono::minutes{5}; ///< for one mail
    std::chrono::milliseconds end = std::chrono::seconds{2};     ///< for it when the server ends
    std::chrono::milliseconds first_pause = std::chrono::minutes{1};
    std::chrono::milliseconds longest_pause = std::chrono::hours{1};
    /// How long the clock must have run evenly before days that it has not reached yet are taken
    /// for a mistake of it.
    std::chrono::milliseconds even_clock = std::chrono::hours{1};
};

/// What the mails are made of. All of it must outlive the mailing.
struct mail_sources {
    storage& kept;
    const reference_data& reference;
    const std::string& server_name;
    const std::string& uuid;
};

class mailing
{
public:
    using teller = std::function<void(const std::string& line, line_level level)>;

    /// `tell` gets what the owner of the server should know.
    mailing(const mail_sources& sources, teller tell, mail_patience patience = {});

    /// Takes what is chosen, now and at each reload. Mails that were not taken are tried again at
    /// once if that is something new.
    void change(mail_options chosen);

    /// Does all that is due, watching with `epoll_fd`. To be called every second or so while the
    /// storage is open.
    void on_time(int epoll_fd, time_point now, std::time_t moment);

    /// Handles a readiness event. False if `fd` is none of the mailing's. The next on_time does the
    /// rest.
    bool on_event(int fd);

    /// Begins no further mail.
    void leave();

    /// The same; gives the one that is under way some seconds. What the database is to remember is
    /// written when the storage is closed after this.
    void close();

    std::uint64_t sent = 0;   ///< mails that the mail program took
    std::uint64_t failed = 0; ///< tries that it did not take

private:
    /// What it waits for.
    enum class step {
        resting, ///< for the next day, or for the end of a pause
        asking,  ///< for the list of those who get a mail
        writing, ///< for a report
        running, ///< for the mail program
        noting   ///< for the database, which is to remember the mail
    };

    /// The report of a style, ready to be sent.
    struct written_report {
        mail_style style{};
        std::string subject = {};
        mail_body body = {};
    };

    void take_back_marks();
    void begin_day(std::optional<std::int64_t> due);
    void ask_who_is_due();
    void take_list(std::vector<mail_subscription> due);
    void go_on();
    void write_report(mail_style style);
    void send_first();
    void take_result(const std::string& error);
    void fail_first(const std::string& error);
    void note_first();
    void end_round(const std::string& trouble);
    bool is_refused(const std::string& address) const;

    mail_sources sources;
    teller tell;
    mail_patience patience;
    mail_options options;
    bool is_leaving = false;

    int epoll_fd = -1;
    time_point now{};
    std::time_t moment = 0;
    even_clock clock;
    bool are_marks_checked = false; ///< since the clock has run evenly

    std::optional<std::int64_t>
        due; ///< the day that mails should be about; none: they are not offered
    std::optional<std::int64_t> day; ///< the day that they are about
    step doing = step::resting;
    time_point next_try = never; ///< of a round while resting, of writing down while noting
    std::chrono::milliseconds pause{};
    std::deque<mail_subscription> waiting;  ///< the first one is under way
    std::map<std::string, unsigned> unsent; ///< by address: how often this day's mail was tried
    unsigned failures_in_row = 0;
    std::size_t sent_in_round = 0;
    bool is_note_missing = false; ///< its owner knows that it cannot be kept what was sent
    std::optional<written_report> report;
    mail_child child;
};

} // namespace tovrik
