// kept_store.hpp - keeps what the services need in a database, for years.
#pragma once

#include "server/storage/heard_before.hpp"
#include "server/storage/kept_hits.hpp"
#include "server/storage/service_state.hpp"
#include "server/storage/service_store.hpp"
#include "server/storage/storage.hpp"

#include <cstdint>
#include <functional>
#include <string>

namespace tovrik
{

class kept_store : public service_store
{
public:
    /// Fills `state` when it opens, and keeps it up to date. `server_name` is for reports. Both
    /// must outlive the store. `complain` gets a line when something could not be kept.
    kept_store(service_state& state, const std::string& server_name,
               std::function<void(const std::string&)> complain);

    /// Opens the database in a folder and reads what is needed from the start. Returns an error
    /// text, empty on success.
    std::string open(const std::string& folder);

    /// Finishes what waits, for some seconds at most, and closes the database.
    void close();

    /// Forgets messages that were received before a moment, some at a time.
    void forget_before(std::time_t moment);

    /// Forgets hits of pager lists before a moment.
    void forget_hits_before(std::time_t moment);

    void add_update(std::uint32_t kind, const std::string& text, yes_or_no answer) override;
    void add_pager(const pager_owner& owner, const pager_entry& entry, yes_or_no answer) override;
    void remove_pager(const pager_owner& owner, const pager_entry& pattern,
                      yes_or_no answer) override;
    void keep_hit(const pager_owner& owner, std::time_t moment, const std::string& text) override;
    void finish_hit(const pager_owner& owner, std::int64_t id) override;
    void subscribe(const std::string& address,
                   std::function<void(subscription_reply)> answer) override;
    void choose_style(const std::string& address, unsigned style,
                      std::function<void(style_reply)> answer) override;
    void complete_message(transmission& message) override;
    void keep_message(const transmission& message) override;
    void make_report(std::time_t moment, report_taker answer) override;

    storage kept;
    heard_before heard;
    std::string uuid;                 ///< of the server, made once
    std::uint64_t messages = 0;       ///< on disk
    std::uint64_t lost_messages = 0;  ///< that could not be kept
    std::size_t waiting_messages = 0; ///< that are not on disk yet
    std::size_t subscriptions = 0;    ///< to mailings
    bool is_crowded = false;          ///< requests are refused, since too many wait
    std::string trouble;              ///< why the latest message could not be kept; empty: it was

private:
    std::string prepare(database& in);
    void finish_message(const std::string& error);
    bool has_room_for_request();
    void write_or_refuse(std::function<std::string(database&, bool&)> work,
                         std::function<void()> mirror, yes_or_no answer);

    service_state& state;
    const std::string& name;
    std::function<void(const std::string&)> complain;
    kept_hits hits;
};

} // namespace tovrik
