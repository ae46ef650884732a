// mail_fixture.hpp - the mailing of a server, without the rest of it. Clocks are the test's; the
// database and the mail program are real.
#pragma once

#include "server/base/sockets.hpp"
#include "server/mail/mail_day.hpp"
#include "server/mail/mailing.hpp"
#include "server/storage/kept_messages.hpp"
#include "unit/mail_program_script.hpp"
#include "unit/storage_fixture.hpp"

#include <functional>
#include <optional>
#include <sys/epoll.h>

using mail_texts = std::vector<std::string>;

/// 5 January 2026
constexpr std::int64_t mailed_day = 20458;

class mailing : public testing::Test
{
protected:
    mailing()
    {
        options.command = {write_mail_program(home, keep_mail)};
        open();
    }
    ~mailing() override
    {
        close();
    }
    mailing(const mailing&) = delete;
    mailing& operator=(const mailing&) = delete;

    /// Starts the server's parts, as at its start.
    void open()
    {
        ASSERT_EQ(kept.open(home.path_of("state"), nothing_to_prepare), "");
        epoll = unique_fd{epoll_create1(EPOLL_CLOEXEC)};
        ASSERT_TRUE(tovrik::watch(epoll.get(), EPOLL_CTL_ADD, kept.event_fd(), EPOLLIN));
        mails.emplace(
            tovrik::mail_sources{kept, reference, name, uuid},
            [this](const std::string& line, tovrik::line_level) { told += line + "\n"; },
            tovrik::mail_patience{.end = default_patience});
        mails->change(options);
    }
    void close()
    {
        mails->close();
        kept.close(default_patience);
        kept.run_finished();
        mails.reset();
    }
    void change()
    {
        mails->change(options);
    }
    void subscribe(const std::string& address, unsigned style = 0,
                   std::int64_t mailed = mailed_day - 1)
    {
        EXPECT_EQ(write_one(kept,
                            [&](tovrik::database& in) {
                                tovrik::mail_subscription made;
                                tovrik::subscription_result result{};
                                bool is_kept = false;
                                std::string error =
                                    subscription_keep(in, address, mailed + 1, made, result);
                                return error.empty()
                                           ? subscription_set_style(in, address, style, is_kept)
                                           : error;
                            }),
                  "");
    }
    void hear(const std::string& registration, std::int64_t on)
    {
        EXPECT_EQ(write_one(kept,
                            [&](tovrik::database& in) {
                                return message_keep(in, {.registration = registration},
                                                    tovrik::mail_day_begin(on) + 43200);
                            }),
                  "");
    }
    /// Lets time pass on all clocks.
    void pass(std::chrono::seconds time)
    {
        now += time;
        moment += time.count();
    }
    void turn()
    {
        epoll_event event{};
        if (epoll_wait(epoll.get(), &event, 1, 20) == 1) {
            if (event.data.fd == kept.event_fd())
                kept.run_finished();
            else
                mails->on_event(event.data.fd);
        }
        mails->on_time(epoll.get(), now, moment);
    }
    void run_until(const std::function<bool()>& holds, const std::string& what)
    {
        const auto deadline = std::chrono::steady_clock::now() + default_patience;
        while (!holds() && std::chrono::steady_clock::now() < deadline)
            turn();
        EXPECT_TRUE(holds()) << what << "\n" << told;
    }
    void run_until_told(const std::string& text)
    {
        run_until([&] { return told.find(text) != std::string::npos; }, text);
        told.clear();
    }
    void settle_without_writing()
    {
        for (int i = 0; i < 10; ++i)
            turn();
    }
    /// Lets all happen that happens without time passing: the storage answers in turn.
    void settle()
    {
        for (int i = 0; i < 3; ++i) {
            turn();
            turn();
            EXPECT_EQ(write_one(kept, nothing_to_prepare), "");
            turn();
        }
    }
    /// Whom the mails are for that have come since the last question.
    mail_texts new_mails()
    {
        mail_texts found;
        for (const std::string& mail : kept_mails(home))
            found.push_back(header_of(mail, "To") + " " + header_of(mail, "Subject").substr(12, 5));
        std::ranges::sort(found);
        for (const std::string& file : home.files())
            if (file.starts_with("mails/mail."))
                unlink(home.path_of(file).c_str());
        return found;
    }

    temp_home home;
    tovrik::storage kept;
    tovrik::reference_data reference;
    std::string name = "Home";
    std::string uuid = "the-uuid";
    unique_fd epoll;
    tovrik::mail_options options{
        .is_offered = true, .from = "tovrikd@acars.example", .at_minute = 10};
    std::optional<tovrik::mailing> mails;
    std::string told;
    std::chrono::steady_clock::time_point now{std::chrono::hours{1}};
    std::time_t moment = tovrik::mail_day_begin(mailed_day + 1) + 600;
};
