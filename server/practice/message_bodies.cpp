// message_bodies.cpp - see message_bodies.hpp.
//
// Messages are texts with places in braces. They are filled from left to right, so that a seed
// gives the same message with every compiler: {flight}, {from} and {to} from the subject; {utc} the
// time of day, {utc+9} nine minutes later; {fix} a waypoint; {letter} a letter from A to F; {00-59}
// a number of that range, with as many digits as its lower bound.
#include "server/practice/message_bodies.hpp"

#include <charconv>
#include <span>
#include <string_view>

namespace tovrik
{
namespace
{

struct body_form {
    const char* label;
    unsigned weight; ///< how often it is heard, relative to the others
    std::string_view text;
};

constexpr std::string_view position_report =
    "#M1BPOSN{46-58}{000-599}E{000-014}{000-599},{fix},{utc},{280-400},{fix},{utc+9},{fix},"
    "M{30-60},{001-360}{010-120},{100-999}";
constexpr std::string_view engine_report =
    "#CFB01/A32001,1,1/{utc}/{from}{to}\n"
    "ENG  N1   EGT  N2   FF\n"
    "1   {78-96}.{0-9} {520-690}  {85-99}.{0-9} {1050-1900}\n"
    "2   {78-96}.{0-9} {520-690}  {85-99}.{0-9} {1050-1900}";
constexpr std::string_view long_position_report =
    "3401 POSRPT {flight} {from}/{to}\n"
    "/UTC {utc}/POS N{46-58}{00-59} E{000-014}{00-59}/ALT {280-400}\n"
    "/SPD {430-490}/FOB {10-60}.{0-9}/SAT M{30-60}\n"
    "/WND {001-360}/{10-99}/NXT {fix} ETA {utc+11}";
constexpr std::string_view airline_message = "OS {to} /IR {to}{utc+40}\n"
                                             "REQ GATE AND CONNEX INFO\n"
                                             "PAX {0-8}/{4-40}/{60-240}";
constexpr std::string_view arrival_estimate = "ETA01{flight}/{from}{to}{utc+35}\n"
                                              "FUEL {24-180} RUNWAY {01-36}";
constexpr std::string_view weather_request = "/WX02 {from} {to}\nREQ METAR TAF";
constexpr std::string_view event_time = "{from}{to}{utc}";
constexpr std::string_view weather = "QUHDQWXXA~1\n"
                                     "WX {to}\n"
                                     "METAR {to} {utc}Z {01-36}0{03-28}KT {3000-9999}\n"
                                     "FEW{008-025} BKN{030-080} {08-24}/{00-07} Q{0990-1035} NOSIG";
constexpr std::string_view gate_message = "INFO FOR CREW {flight}\n"
                                          "ARRIVAL GATE {to} {letter}{1-68}\n"
                                          "NEXT SECTOR ON TIME, TURNROUND {35-90} MIN";
constexpr std::string_view crew_question = "{flight} PLS CONFIRM FUEL ON BOARD AND ETA {to}\n"
                                           "RGDS DISPATCH DESK {1-12}";

constexpr body_form downlink_forms[] = {
    {"H1", 16, position_report},
    {"H1", 8, engine_report},
    {"80", 10, long_position_report},
    {"Q0", 14, ""},
    {"_d", 16, ""},
    {"SA", 10, "0EV{utc}{00-59}V/"},
    {"5Z", 6, airline_message},
    {"17", 5, arrival_estimate},
    {"10", 4, weather_request},
    {"QP", 2, event_time},
    {"QQ", 2, event_time},
    {"QR", 2, event_time},
    {"QS", 2, event_time},
    {"Q7", 3, ""},
};

constexpr body_form uplink_forms[] = {
    {"_d", 6, ""},      {"RA", 3, weather},       {"C1", 3, gate_message},
    {"H1", 2, weather}, {"5Z", 2, crew_question}, {"SQ", 2, ""},
};

constexpr std::string_view waypoints[] = {"KONAN", "DOVER", "LAMSO", "REDFA", "BOMBI", "SUMUM",
                                          "TINIL", "RIMET", "OKTOK", "GOLES", "ERNAS", "NATEB"};

unsigned parse_number(std::string_view text)
{
    unsigned number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string pad_number(unsigned number, std::size_t width)
{
    std::string text = std::to_string(number);
    return std::string(width > text.size() ? width - text.size() : 0, '0') + text;
}

std::string format_time(unsigned minute)
{
    return pad_number(minute / 60 % 24, 2) + pad_number(minute % 60, 2);
}

/// The text for the place that is called `name`.
std::string fill_place(std::string_view name, random_source& random, const message_subject& subject)
{
    if (name == "flight")
        return subject.flight_number;
    if (name == "from")
        return subject.from;
    if (name == "to")
        return subject.to;
    if (name == "fix")
        return std::string{random.one_of(std::span<const std::string_view>{waypoints})};
    if (name == "letter")
        return std::string(1, static_cast<char>('A' + random.below(6)));
    if (name.starts_with("utc"))
        return format_time(subject.minute + (name.size() > 4 ? parse_number(name.substr(4)) : 0));
    const auto dash = name.find('-');
    return pad_number(random.between(parse_number(name), parse_number(name.substr(dash + 1))),
                      dash);
}

std::string fill_places(std::string_view text, random_source& random,
                        const message_subject& subject)
{
    std::string content;
    for (auto open = text.find('{'); open != std::string_view::npos; open = text.find('{')) {
        const auto close = text.find('}', open);
        content += text.substr(0, open);
        content += fill_place(text.substr(open + 1, close - open - 1), random, subject);
        text.remove_prefix(close + 1);
    }
    return content.append(text);
}

message_body make_body(std::span<const body_form> forms, random_source& random,
                       const message_subject& subject)
{
    unsigned total = 0;
    for (const auto& form : forms) {
        total += form.weight;
    }
    unsigned left = random.below(total);
    const body_form* chosen = forms.data();
    while (left >= chosen->weight) {
        left -= chosen->weight;
        ++chosen;
    }
    return {chosen->label, fill_places(chosen->text, random, subject)};
}

} // namespace

message_body downlink_body(random_source& random, const message_subject& subject)
{
    return make_body(downlink_forms, random, subject);
}

message_body uplink_body(random_source& random, const message_subject& subject)
{
    return make_body(uplink_forms, random, subject);
}

} // namespace tovrik
