// client_end.hpp - the far end of a server's connection: sends anything, and checks every answer.
#pragma once

#include "base/owners.hpp"
#include "fuzz/property.hpp"
#include "server/base/limits.hpp"
#include "server/protocol/packet.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <vector>

/// What a server may send.
enum class answer_form {
    any,      ///< one byte or more, which clients ignore
    line,     ///< can be shown as it is
    fields,   ///< the same, with tabs between its fields
    document, ///< XML that clients read
    sizes,    ///< the announcement of a report
    piece,    ///< a piece of the report that was announced
    end,      ///< the last packet of a connection
};

struct answer_rule {
    std::uint32_t number;
    answer_form form;
};

constexpr answer_rule answer_rules[] = {
    {tovrik::kind::closing, answer_form::end},
    {tovrik::kind::tick, answer_form::any},
    {tovrik::kind::replay_announcement, answer_form::any},
    {tovrik::kind::update_accepted, answer_form::any},
    {tovrik::kind::update_refused, answer_form::any},
    {tovrik::kind::transmission, answer_form::document},
    {tovrik::kind::capabilities, answer_form::document},
    {tovrik::kind::report_started, answer_form::any},
    {tovrik::kind::report_busy, answer_form::any},
    {tovrik::kind::report_empty, answer_form::any},
    {tovrik::kind::report_header, answer_form::sizes},
    {tovrik::kind::pager_blocked, answer_form::any},
    {tovrik::kind::pager_done, answer_form::any},
    {tovrik::kind::pager_failed, answer_form::any},
    {tovrik::kind::password_accepted, answer_form::any},
    {tovrik::kind::password_refused, answer_form::any},
    {tovrik::kind::identification, answer_form::any},
    {tovrik::kind::identification_accepted, answer_form::any},
    {tovrik::kind::identification_refused, answer_form::any},
    {tovrik::kind::pager_list, answer_form::fields},
    {tovrik::kind::closing_for_maintenance, answer_form::end},
    {tovrik::kind::notice, answer_form::line},
    {tovrik::kind::updates_forbidden, answer_form::line},
    {tovrik::kind::error_text, answer_form::line},
    {tovrik::kind::uptime, answer_form::fields},
    {tovrik::kind::compressed_transmission, answer_form::any},
    {tovrik::kind::report_piece, answer_form::piece},
};

class client_end
{
public:
    client_end()
    {
        int both[2] = {-1, -1};
        require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, both) == 0,
                "there are sockets");
        socket = unique_fd{both[0]};
        server_side = unique_fd{both[1]};
    }

    /// Sends as much as the server's socket takes.
    void send(const std::string& bytes) const
    {
        if (socket && !is_silent)
            ::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    }

    /// Reads everything that has come, and checks it.
    void read_all()
    {
        char block[16'384];
        ssize_t count = 0;
        while (socket && (count = recv(socket.get(), block, sizeof block, MSG_DONTWAIT)) > 0)
            input.append(block, static_cast<std::size_t>(count));
        while (take_packet())
            continue;
        if (count == 0)
            hang_up();
    }

    /// Closes the connection.
    void hang_up()
    {
        socket = unique_fd{};
    }

    /// Says nothing more, and goes on reading.
    void stop_sending()
    {
        if (socket)
            shutdown(socket.get(), SHUT_WR);
        is_silent = true;
    }

    unique_fd server_side; ///< until the server takes it
    int fd = -1;           ///< of the server's side
    std::uint64_t number = 0;

private:
    bool take_packet()
    {
        if (input.size() < tovrik::header_bytes)
            return false;
        const tovrik::wire_header header = tovrik::decode_header(input);
        require(header.length <= tovrik::max_payload_bytes, "a payload fits its packet");
        if (input.size() < tovrik::header_bytes + header.length)
            return false;
        check(header, std::string_view{input}.substr(tovrik::header_bytes, header.length));
        input.erase(0, tovrik::header_bytes + header.length);
        return true;
    }

    void check(const tovrik::wire_header& header, std::string_view payload)
    {
        const auto* const rule = std::ranges::find(answer_rules, header.kind, &answer_rule::number);
        require(rule != std::end(answer_rules), "an answer is of a known kind");
        require(!is_over, "nothing follows the end");
        require(!payload.empty(), "a packet can be noticed");
        require(header.extra == 0 || header.kind == tovrik::kind::compressed_transmission,
                "only compressed packets have a size hint");
        require((header.param1 == 0 && header.param2 == 0) ||
                    header.kind == tovrik::kind::replay_announcement,
                "only a replay is counted");
        check_form(rule->form, payload);
    }

    void check_form(answer_form form, std::string_view payload)
    {
        if (form == answer_form::line || form == answer_form::fields)
            require(is_shown(payload, form == answer_form::fields), "a text can be shown");
        if (form == answer_form::document)
            check_document(payload);
        if (form == answer_form::sizes)
            take_sizes(std::string{payload});
        if (form == answer_form::piece) {
            require(payload.size() <= announced, "a report is as long as announced");
            announced -= payload.size();
        }
        is_over = form == answer_form::end;
    }

    static bool is_shown(std::string_view text, bool may_have_tabs)
    {
        return text.size() <= tovrik::max_text_bytes &&
               std::ranges::none_of(text, [may_have_tabs](unsigned char byte) {
                   return (byte < 0x20 && !(may_have_tabs && byte == '\t')) ||
                          (byte >= 0x7F && byte < 0xA0);
               });
    }

    void take_sizes(const std::string& text)
    {
        require(announced == 0, "a report is sent whole");
        std::size_t end = 0;
        announced = std::stoul(text, &end);
        require(announced > 0 && text.at(end) == '\t', "an announcement has two sizes");
    }

    /// Every tag is closed by its own, and texts have nothing that clients would take for a tag.
    static void check_document(std::string_view text)
    {
        constexpr std::string_view declaration_end = "?>";
        require(text.starts_with("<?xml ") && text.size() <= tovrik::max_text_bytes,
                "a document fits and is declared");
        text.remove_prefix(text.find(declaration_end) + declaration_end.size());
        std::vector<std::string_view> open;
        for (std::size_t tag = 0; (tag = text.find('<')) != std::string_view::npos;) {
            const std::size_t end = text.find('>');
            require(end != std::string_view::npos && tag < end, "a tag is whole");
            require(text.substr(0, tag).find('%') == std::string_view::npos, "values have no %");
            const std::string_view name = text.substr(tag + 1, end - tag - 1);
            if (name.starts_with('/')) {
                require(!open.empty() && open.back() == name.substr(1), "tags are balanced");
                open.pop_back();
            } else {
                open.push_back(name);
            }
            text.remove_prefix(end + 1);
        }
        require(open.empty() && text.find('>') == std::string_view::npos, "every tag is closed");
    }

    unique_fd socket;
    std::string input;         ///< received, and no whole packet yet
    std::size_t announced = 0; ///< bytes of the report under way that have not come yet
    bool is_silent = false;
    bool is_over = false;
};
