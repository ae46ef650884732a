// mail_text.cpp - see mail_text.hpp.
#include "server/mail/mail_text.hpp"

#include "base/md5.hpp"
#include "server/base/text_fields.hpp"
#include "server/base/utf8_text.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tovrik
{
namespace
{

/// A line of mail has at most 998 bytes, and a character of ISO-8859-1 at most two.
constexpr std::size_t max_line_characters = 480;

/// An encoded word has at most 75 bytes, and a character at most six.
constexpr std::size_t max_word_characters = 10;

constexpr std::array<const char*, 7> day_names = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<const char*, 12> month_names = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

bool is_ascii(std::string_view text)
{
    return std::ranges::none_of(text, [](char c) { return (c & 0x80) != 0; });
}

std::string replace_controls(std::string_view text)
{
    std::string cleaned{text};
    std::ranges::replace_if(
        cleaned, [](char c) { return is_control(static_cast<unsigned char>(c)); }, '?');
    return cleaned;
}

void append_line(std::string& text, std::string_view line)
{
    // Some mail programs take a single dot for the end of the mail.
    text.append(line == "." ? " " : "").append(replace_controls(line)).append("\n");
}

void append_hexadecimal(std::string& text, char before, char byte)
{
    char number[8];
    std::snprintf(number, sizeof number, "%c%02X", before, static_cast<unsigned char>(byte));
    text += number;
}

/// Some characters as a word that headers carry.
void append_encoded_word(std::string& header, std::string_view latin1)
{
    header += "=?utf-8?Q?";
    for (const char byte : utf8_of_latin1(latin1)) {
        if (is_digit(byte) || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z')) {
            header += byte;
        } else {
            append_hexadecimal(header, '=', byte);
        }
    }
    header += "?=";
}

/// A text for a header, which goes on in further lines if it must.
std::string encode_header(std::string_view latin1)
{
    std::string_view rest = latin1;
    if (is_ascii(rest) && rest.find("=?") == std::string_view::npos)
        return replace_controls(rest);
    const std::string cleaned = replace_controls(rest);
    std::string header;
    for (std::size_t begin = 0; begin < cleaned.size(); begin += max_word_characters) {
        header += begin == 0 ? "" : "\n ";
        append_encoded_word(header, std::string_view{cleaned}.substr(begin, max_word_characters));
    }
    return header;
}

std::string format_date(std::time_t moment)
{
    std::tm utc{};
    if (gmtime_r(&moment, &utc) == nullptr)
        return "Thu, 01 Jan 1970 00:00:00 +0000";
    char text[80];
    std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d +0000",
                  day_names.at(static_cast<std::size_t>(utc.tm_wday)), utc.tm_mday,
                  month_names.at(static_cast<std::size_t>(utc.tm_mon)), utc.tm_year + 1900,
                  utc.tm_hour, utc.tm_min, utc.tm_sec);
    return text;
}

/// An address as a part of a link.
std::string encode_link(std::string_view address)
{
    constexpr std::string_view plain_marks = "@.-_+";
    std::string link;
    for (const char c : address) {
        if (is_digit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
            plain_marks.find(c) != std::string_view::npos) {
            link += c;
        } else {
            append_hexadecimal(link, '%', c);
        }
    }
    return link;
}

} // namespace

mail_body mail_body_make(std::string_view latin1)
{
    std::string text;
    text.reserve(latin1.size());
    if (latin1.ends_with('\n'))
        latin1.remove_suffix(1);
    for (std::string_view line : split_fields(latin1, '\n')) {
        while (line.size() > max_line_characters) {
            append_line(text, line.substr(0, max_line_characters));
            line.remove_prefix(max_line_characters);
        }
        append_line(text, line);
    }
    const bool is_plain = is_ascii(text);
    return {is_plain ? std::move(text) : utf8_of_latin1(text), is_plain};
}

std::string mail_id(std::string_view uuid, std::string_view from, std::string_view to,
                    std::int64_t day)
{
    const std::string number = std::to_string(day);
    std::string about{uuid};
    about.append("\n").append(to).append("\n").append(number);
    char digest[33];
    md5_hex(about, digest);
    std::string id = "<tovrikd." + number + "." + digest;
    return id.append(from.substr(std::min(from.find('@'), from.size()))).append(">");
}

std::string mail_head_text(const mail_head& head, bool is_ascii)
{
    std::string text;
    const auto append = [&text](const char* name, const std::string& value) {
        text.append(name).append(": ").append(value).append("\n");
    };
    append("From", head.from);
    append("To", head.to);
    append("Subject", encode_header(head.subject));
    append("Date", format_date(head.date));
    append("Message-ID", head.id);
    append("MIME-Version", "1.0");
    append("Content-Type", "text/plain; charset=utf-8");
    append("Content-Transfer-Encoding", is_ascii ? "7bit" : "8bit");
    append("Auto-Submitted", "auto-generated");
    append("List-Unsubscribe", "<mailto:" + encode_link(head.from) + "?subject=unsubscribe>");
    return text + "\n";
}

} // namespace tovrik
