// service_store.hpp - what the services need kept, whatever keeps it.
#pragma once

#include "server/storage/pager_lists.hpp"

#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tovrik
{

struct subscription_reply {
    bool is_new = false;
    std::uint16_t code = 0; ///< that the subscriber adds to further requests; 0: none was taken
};

enum class style_reply { chosen, not_subscribed, not_kept };

/// A report, or a part of a long one, as it is announced and sent.
struct report_part {
    std::string data;     ///< compressed
    std::size_t size = 0; ///< of the text
};

/// Gets the parts of a report.
using report_taker = std::function<void(std::optional<std::vector<report_part>> parts)>;

/// Compresses a part of a report.
report_part report_part_of(const std::string& text);

/// All functions are for the loop's thread. Each gives its answer once, at once or in a later turn:
/// what was granted is kept by then. "No" stands for what the request is not allowed, and for what
/// could not be kept.
class service_store
{
public:
    using yes_or_no = std::function<void(bool is_granted)>;

    service_store() = default;
    service_store(const service_store&) = delete;
    service_store& operator=(const service_store&) = delete;
    virtual ~service_store() = default;

    /// Adds an entry to the reference data; see reference_data::add.
    virtual void add_update(std::uint32_t kind, const std::string& text, yes_or_no answer) = 0;

    /// Adds an entry to a pager list; see pager_lists::add.
    virtual void add_pager(const pager_owner& owner, const pager_entry& entry,
                           yes_or_no answer) = 0;

    /// Removes all entries of a list that match a pattern. No, if there is none.
    virtual void remove_pager(const pager_owner& owner, const pager_entry& pattern,
                              yes_or_no answer) = 0;

    /// Keeps a hit of a list whose owner is not connected, in the waiting hits and for as long as
    /// the rest.
    virtual void keep_hit(const pager_owner& owner, std::time_t moment,
                          const std::string& text) = 0;

    /// The owner of a list has been told of a waiting hit, which is over.
    virtual void finish_hit(const pager_owner& owner, std::int64_t id) = 0;

    /// Subscribes an address to daily mailings, in the first style; one that is subscribed already
    /// keeps what it has.
    virtual void subscribe(const std::string& address,
                           std::function<void(subscription_reply)> answer) = 0;

    /// Chooses the style of an address' mailings.
    virtual void choose_style(const std::string& address, unsigned style,
                              std::function<void(style_reply)> answer) = 0;

    /// Fills in what is known of earlier messages: contacts, and the flights of the day.
    virtual void complete_message(transmission& message) = 0;

    /// Keeps a message that is published now.
    virtual void keep_message(const transmission& message) = 0;

    /// Makes the report of the day that a client asks for with `moment`, the first second of it.
    /// No parts if there was no message; nothing at all if it cannot be made now.
    virtual void make_report(std::time_t moment, report_taker answer) = 0;
};

} // namespace tovrik
