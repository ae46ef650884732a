// tovrikd_mistakes_test.cpp - what tovrikd says of a wrong configuration, line by line.
#include "server/tovrikd/configuration_read.hpp"
#include "server/tovrikd/likely_word.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using texts = std::vector<std::string>;

struct wrong_text {
    const char* text; ///< after a first line that lets mailing be
    texts mistakes;   ///< without the name of the file
};

void expect_mistakes(const wrong_text& wrong)
{
    const std::string text = std::string{"services.mailing = false\n"} + wrong.text;
    texts expected;
    for (const std::string& mistake : wrong.mistakes)
        expected.push_back("/x/f.toml:" + mistake);
    EXPECT_EQ(tovrik::configuration_read_text(text, "/x/f.toml").mistakes, expected) << wrong.text;
}

TEST(tovrikd_mistakes, of_form_are_told_by_the_first)
{
    const wrong_text rows[] = {
        {"a = 1\nname = \nport = x",
         {"3: this is not TOML: key-value pair: expected value, saw '\\n'"}},
        {"\n[http", {"3: this is not TOML: table header: encountered end-of-file"}},
        {"port = 1\nport = 2",
         {"3: this is not TOML: key-value pair: cannot redefine existing integer 'port'"}},
        {"port = 99999999999999999999",
         {"2: this is not TOML: decimal integer: '99999999999999999999' is not representable in "
          "64 bits"}},
        {"[[@",
         {"2: this is not TOML: key: expected bare key starting character or string delimiter, saw "
          "'@'"}},
        {"name = \"\xFF\"", {"2: this is not UTF-8"}},
        {"# Z\xC3\xBCrich\n# \xED\xA0\x80", {"3: this is not UTF-8"}},
        {"port = \xC3\xA9", {"2: this is not TOML: value: could not determine value type"}},
        {"[\xC3\xA9]\n[\xC3\xA9]",
         {"3: this is not TOML: table header: cannot redefine existing table '\xC3\xA9'"}},
    };
    for (const wrong_text& row : rows)
        expect_mistakes(row);
}

TEST(tovrikd_mistakes, of_names_are_told_with_the_name_that_was_meant)
{
    const wrong_text rows[] = {
        {"prot = 1", {"2: there is no key \"prot\"; did you mean \"port\"?"}},
        {"whatever = 1", {"2: there is no key \"whatever\""}},
        {"\xC3\xA9 = 1", {"2: there is no key \"\xC3\xA9\""}},
        {"[htpp]\nport = 1", {"2: there is no table [htpp]; did you mean [http]?"}},
        {"[elsewhere]", {"2: there is no table [elsewhere]"}},
        {"[http]\n\nprt = 1", {"4: there is no key \"prt\"; did you mean \"port\"?"}},
        {"[[input]]\ntype = 'udp'\nport = 1\nalow = []",
         {"5: there is no key \"alow\"; did you mean \"allow\"?"}},
        {"[[inputs]]\n", {"2: there is no key \"inputs\"; did you mean \"input\"?"}},
        {"\"a\\u001b[31m\\n\" = 1", {"2: there is no key \"a?[31m?\""}},
    };
    for (const wrong_text& row : rows)
        expect_mistakes(row);
}

TEST(tovrikd_mistakes, of_types_are_told)
{
    const wrong_text rows[] = {
        {"name = 1", {"2: name must be a text, in quotes"}},
        {"port = '1'", {"2: port must be a whole number"}},
        {"port = 1.0", {"2: port must be a whole number"}},
        {"show_reception = 1", {"2: show_reception must be true or false"}},
        {"http = 1", {"2: http must be a table, [http]"}},
        {"[[http]]", {"2: http must be a table, [http]"}},
        {"[name]", {"2: name must be a text, in quotes"}},
        {"[input]", {"2: input must be tables, each begun by [[input]]"}},
        {"input = [1, 2]", {"2: input must be tables, each begun by [[input]]"}},
        {"[[channel]]\nname = 'a'\nport = 1\nlabels = 'H1'",
         {"5: labels must be a list of texts, in square brackets"}},
        {"[[channel]]\nname = 'a'\nport = 1\nlabels = ['H1',\n2]",
         {"6: labels must be a text, in quotes"}},
        {"[mail]\nat = 00:10:00", {"3: at must be a text, in quotes"}},
    };
    for (const wrong_text& row : rows)
        expect_mistakes(row);
}

TEST(tovrikd_mistakes, of_values_are_told)
{
    const wrong_text rows[] = {
        {"port = 65536", {"2: port must be from 0 to 65535"}},
        {"port = -1", {"2: port must be from 0 to 65535"}},
        {"max_clients = 0", {"2: max_clients must be from 1 to 4096"}},
        {"bind = 'localhost'", {"2: bind must be an IPv4 address, such as 127.0.0.1"}},
        {"bind = '::1'", {"2: bind must be an IPv4 address, such as 127.0.0.1"}},
        {"[http]\nbind = '1.2.3'", {"3: bind must be an IPv4 address, such as 127.0.0.1"}},
        {"[http]\npublic_name = 'a b'",
         {"3: public_name must be the name of a host or an address"}},
        {"name = ''", {"2: name must not be empty"}},
        {"name = \"a\\tb\"", {"2: name must not have a tab"}},
        {"location = \"a\\nb\"",
         {"2: location must not have a line end or another control character"}},
        {"description = \"a\\u0085b\"",
         {"2: description must not have a line end or another control character"}},
        {"state_directory = \"a\\u0000\"",
         {"2: state_directory must not have a line end or another control character"}},
        {"name = '1234567890123456789012345678901234567890123456789012345678901'",
         {"2: name must have at most 60 characters"}},
        {"mail.from = 'me'", {"2: from must be an address of mail, such as tovrikd@acars.example"}},
        {"mail.from = 'a@b\u00E4'",
         {"2: from must be an address of mail, such as tovrikd@acars.example"}},
        {"mail.never_to = 'a@b'", {"2: never_to must be a list of texts, in square brackets"}},
        {"mail.never_to = ['a@b', 'me']",
         {"2: never_to has \"me\", which is no address of mail, such as me@example.org"}},
        {"mail.at = '24:00'", {"2: at must be a time of the day as HH:MM, such as \"00:10\""}},
        {"mail.at = '0:10'", {"2: at must be a time of the day as HH:MM, such as \"00:10\""}},
        {"mail.at = '00:60'", {"2: at must be a time of the day as HH:MM, such as \"00:10\""}},
        {"mail.at = '-1:10'", {"2: at must be a time of the day as HH:MM, such as \"00:10\""}},
        {"[[input]]\ntype = 'udp'\nport = 1\nallow = ['10.0.0.0/33', '10.0.0/8',\n'10.0.0.0/',\n"
         "'10.0.0.0/+8']",
         {"5: allow has \"10.0.0.0/33\", which is no range of IPv4 addresses, such as "
          "192.168.1.0/24",
          "5: allow has \"10.0.0/8\", which is no range of IPv4 addresses, such as 192.168.1.0/24",
          "6: allow has \"10.0.0.0/\", which is no range of IPv4 addresses, such as "
          "192.168.1.0/24",
          "7: allow has \"10.0.0.0/+8\", which is no range of IPv4 addresses, such as "
          "192.168.1.0/24"}},
        {"[[channel]]\nname = 'a'\nport = 1\nkinds = ['vdl2', 'vdl3']",
         {"5: kinds has \"vdl3\", which is none of vhf, vdl2, hfdl, iridium and inmarsat"}},
    };
    for (const wrong_text& row : rows)
        expect_mistakes(row);
}

TEST(tovrikd_mistakes, of_inputs_follow_their_type)
{
    const std::string needs = "2: an input of the type ";
    const wrong_text rows[] = {
        {"[[input]]\nport = 1", {"2: this input needs \"type\""}},
        {"[[input]]\ntype = 'tcp'\nport = 1\ntopic = 'x'\nwrong = 1",
         {"3: type must be \"udp\", \"tcp-listen\", \"tcp-connect\", \"mqtt\", \"zmq\" or \"pipe\"",
          "6: there is no key \"wrong\""}},
        {"[[input]]\ntype = 1",
         {"3: type must be \"udp\", \"tcp-listen\", \"tcp-connect\", \"mqtt\", \"zmq\" or "
          "\"pipe\""}},
        {"[[input]]\ntype = 'udp'", {needs + "\"udp\" needs \"port\""}},
        {"[[input]]\ntype = 'tcp-listen'", {needs + "\"tcp-listen\" needs \"port\""}},
        {"[[input]]\ntype = 'tcp-connect'",
         {needs + "\"tcp-connect\" needs \"port\"", needs + "\"tcp-connect\" needs \"host\""}},
        {"[[input]]\ntype = 'mqtt'",
         {needs + "\"mqtt\" needs \"host\"", needs + "\"mqtt\" needs \"topic\""}},
        {"[[input]]\ntype = 'zmq'", {needs + "\"zmq\" needs \"endpoint\""}},
        {"[[input]]\ntype = 'pipe'", {needs + "\"pipe\" needs \"path\""}},
        {"[[input]]\ntype = 'udp'\nport = 1\ntopic = 'x'\nhost = 'y'",
         {"5: \"topic\" does not belong to an input of the type \"udp\"",
          "6: \"host\" does not belong to an input of the type \"udp\""}},
        {"[[input]]\ntype = 'mqtt'\nhost = 'h'\ntopic = ''\nport = 0\nbind = '0.0.0.0'",
         {"5: topic must not be empty", "6: port must be from 1 to 65535",
          "7: \"bind\" does not belong to an input of the type \"mqtt\""}},
        {"[[input]]\ntype = 'zmq'\nendpoint = 'udp://x'",
         {"4: endpoint must be an endpoint, such as tcp://127.0.0.1:5555"}},
    };
    for (const wrong_text& row : rows)
        expect_mistakes(row);
}

TEST(tovrikd_mistakes, between_tables_are_told_at_the_later_one)
{
    const wrong_text rows[] = {
        {"[[channel]]\nname = 'a'\nport = 2202", {"4: port 2202 is that of the server already"}},
        {"port = 80\n[http]\nport = 80", {"4: port 80 is that of the server already"}},
        {"http.port = 80\nport = 80", {"3: port 80 is that of [http] already"}},
        {"[[channel]]\nname = 'a'\nport = 1\n[[channel]]\nname = 'b'\nport = 1",
         {"7: port 1 is that of the channel \"a\" already"}},
        {"[[input]]\ntype = 'tcp-listen'\nport = 2202",
         {"4: port 2202 is that of the server already"}},
        {"[[input]]\ntype = 'udp'\nport = 1\nname = 'a'\n[[input]]\ntype = 'udp'\nport = 1\n"
         "name = 'b'\nbind = '0.0.0.0'",
         {"8: port 1 is that of the input \"a\" already"}},
        {"[[input]]\ntype = 'udp'\nport = 1\nname = 'a'\n[[input]]\ntype = 'udp'\nport = 2\n"
         "name = 'a'",
         {"9: another input has the name \"a\" already"}},
        {"[[input]]\ntype = 'mqtt'\nhost = 'h'\ntopic = 't'\n[[input]]\ntype = 'mqtt'\n"
         "host = 'h'\ntopic = 't'",
         {"6: another input has the name \"mqtt h t\" already"}},
        {"[[channel]]\nname = 'a'\nport = 1\n[[channel]]\nname = 'a'\nport = 2",
         {"6: another channel has the name \"a\" already"}},
        {"[[channel]]\n\n[[peer]]\n",
         {"2: this channel needs \"name\"", "2: this channel needs \"port\"",
          "4: this peer needs \"host\""}},
    };
    for (const wrong_text& row : rows)
        expect_mistakes(row);
}

TEST(tovrikd_mistakes, are_none_where_listeners_or_names_only_look_alike)
{
    const wrong_text rows[] = {
        {"[[input]]\ntype = 'udp'\nport = 2202", {}},
        {"http.port = 2202\nhttp.bind = '127.0.0.2'", {}},
        {"port = 0\n[[channel]]\nname = 'a'\nport = 0\n[[channel]]\nname = 'b'\nport = 0", {}},
        {"[[input]]\ntype = 'udp'\nport = 1\nname = 'a'\n[[channel]]\nname = 'a'\nport = 1", {}},
    };
    for (const wrong_text& row : rows)
        expect_mistakes(row);
}

TEST(tovrikd_mistakes, tell_of_mailing_without_a_sender_at_the_nearest_line)
{
    const std::string what =
        ": mailing needs \"from\" in [mail], or \"mailing = false\" in [services]";
    const struct {
        const char* text;
        int line;
    } rows[] = {{"", 1},
                {"\nname = 'x'\n", 1},
                {"\n[services]\nupdates = true\n", 2},
                {"\n[services]\nmailing = true\n", 3},
                {"\n\n[services]\nmailing = true\n[mail]\nat = '00:00'\n", 5}};
    for (const auto& row : rows)
        EXPECT_EQ(tovrik::configuration_read_text(row.text, "f").mistakes,
                  texts{"f:" + std::to_string(row.line) + what})
            << row.text;
    EXPECT_EQ(tovrik::configuration_read_text("mail.from = 'a@b'", "f").mistakes, texts{});
}

TEST(tovrikd_mistakes, come_all_at_once_in_the_order_of_the_lines)
{
    EXPECT_EQ(tovrik::configuration_read_text("port = 'a'\nname = 1\nbind = 2\n"
                                              "[[input]]\ntype = 'udp'\n"
                                              "[http]\nx = 1\nport = 70000\n"
                                              "[services]\nmailing = false\n",
                                              "f")
                  .mistakes,
              (texts{"f:1: port must be a whole number", "f:2: name must be a text, in quotes",
                     "f:3: bind must be a text, in quotes",
                     "f:4: an input of the type \"udp\" needs \"port\"",
                     "f:7: there is no key \"x\"", "f:8: port must be from 0 to 65535"}));
}

TEST(tovrikd_mistakes, beyond_a_hundred_are_counted)
{
    std::string text = "services.mailing = false\n";
    for (int i = 0; i < 150; ++i)
        text += "wrong" + std::to_string(i) + " = 1\n";
    const auto mistakes = tovrik::configuration_read_text(text, "f").mistakes;
    ASSERT_EQ(mistakes.size(), 101U);
    EXPECT_EQ(mistakes.front(), "f:2: there is no key \"wrong0\"");
    EXPECT_EQ(mistakes.back(), "f: there are 50 more mistakes");
}

TEST(tovrikd_mistakes, guess_a_word_that_differs_in_up_to_two_letters)
{
    const std::vector<std::string_view> words = {"port", "path", "passwords_file", "at"};
    const struct {
        const char* typed;
        const char* meant;
    } rows[] = {{"port", "port"},
                {"prot", "port"},
                {"pot", "port"},
                {"paths", "path"},
                {"password_file", "passwords_file"},
                {"x", ""},
                {"qqqq", ""},
                {"ax", "at"},
                {"portable", ""},
                {"", ""}};
    for (const auto& row : rows)
        EXPECT_EQ(tovrik::likely_word(row.typed, words), row.meant) << row.typed;
    EXPECT_EQ(tovrik::likely_word(std::string(100000, 'p'), words), "");
}

} // namespace
