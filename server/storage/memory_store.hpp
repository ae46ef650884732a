// memory_store.hpp - keeps what the services need in memory, while the server runs.
#pragma once

#include "server/storage/message_archive.hpp"
#include "server/storage/service_state.hpp"
#include "server/storage/service_store.hpp"

#include <map>
#include <string>

namespace tovrik
{

class memory_store : public service_store
{
public:
    /// Uses `state` for what clients add to it. `server_name` is for reports. Both must outlive the
    /// store.
    memory_store(service_state& state, const std::string& server_name);

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

    std::map<std::string, unsigned> subscriptions; ///< style of the mailings, by address
    message_archive archive;
    bool keeps_messages = true;

private:
    service_state& state;
    const std::string& name;
};

} // namespace tovrik
