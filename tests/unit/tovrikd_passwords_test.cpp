// tovrikd_passwords_test.cpp - the file of passwords, and what may be a password.
#include "server/tovrikd/configuration_limits.hpp"
#include "server/tovrikd/passwords.hpp"
#include "server/tovrikd/typed_password.hpp"
#include "support/temp_home.hpp"

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace
{

using texts = std::vector<std::string>;

const std::string digest = "900150983cd24fb0d6963f7d28e17f72";

class password_file : public testing::Test
{
protected:
    tovrik::passwords_result read(const std::string& text, mode_t mode = 0600) const
    {
        home.write_file("passwords", text);
        EXPECT_EQ(chmod(path().c_str(), mode), 0);
        return tovrik::passwords_read(path());
    }
    std::string path() const
    {
        return home.path_of("passwords");
    }

    temp_home home;
};

TEST_F(password_file, gives_its_labels_and_digests_in_order)
{
    const std::string other(32, '0');
    const std::string longest(40, 'x');
    const auto result = read("me:" + digest + "\n\nthe neighbour's \"tablet\":" + other + "\n" +
                             longest + ":" + other);
    EXPECT_EQ(result.mistakes, texts{});
    EXPECT_EQ(result.passwords,
              (std::vector<tovrik::password>{
                  {"me", digest}, {"the neighbour's \"tablet\"", other}, {longest, other}}));
    EXPECT_TRUE(read("").passwords.empty());
}

TEST_F(password_file, has_every_mistake_told_with_its_line)
{
    const std::string label = "a label must have 1 to 40 printable characters of ASCII";
    const std::string form = "a digest must have 32 digits, 0 to 9 and a to f";
    const struct {
        std::string line;
        std::string mistake;
    } rows[] = {{"me", "this is not a label, a colon and a digest"},
                {":" + digest, label},
                {std::string(41, 'x') + ":" + digest, label},
                {"J\xFCrgen:" + digest, label},
                {"a\tb:" + digest, label},
                {"me:" + digest.substr(1), form},
                {"me:" + digest + "0", form},
                {"me:" + digest + "\r", form},
                {"me:A" + digest.substr(1), form},
                {"me:x:" + digest, form},
                {"first:" + digest, "the label \"first\" is there already"}};
    std::string text = "first:" + digest + "\n";
    texts expected;
    int number = 1;
    for (const auto& row : rows) {
        text += row.line + "\n";
        expected.push_back(path() + ":" + std::to_string(++number) + ": " + row.mistake);
    }
    EXPECT_EQ(read(text).mistakes, expected);
}

TEST_F(password_file, must_be_a_file_that_not_everybody_may_use)
{
    for (const mode_t mode : {0600U, 0400U})
        EXPECT_EQ(read("me:" + digest, mode).mistakes, texts{}) << mode;
    for (const mode_t mode : {0640U, 0620U, 0610U, 0604U, 0602U, 0601U})
        EXPECT_EQ(read("me:" + digest, mode).mistakes,
                  texts{path() + ": others than its owner may use it; chmod 600 changes that"})
            << mode;
    EXPECT_EQ(tovrik::passwords_read(home.path_of("none")).mistakes,
              texts{home.path_of("none") + ": No such file or directory"});
    EXPECT_EQ(tovrik::passwords_read(home.path()).mistakes,
              texts{home.path() + ": Is a directory"});
    ASSERT_EQ(mkfifo(home.path_of("pipe").c_str(), 0600), 0);
    EXPECT_EQ(tovrik::passwords_read(home.path_of("pipe")).mistakes,
              texts{home.path_of("pipe") + ": not an ordinary file"});
}

TEST_F(password_file, has_bounds)
{
    EXPECT_EQ(read(std::string(tovrik::max_configuration_bytes + 1, '\n')).mistakes,
              texts{path() + ": larger than 1048576 bytes"});
    std::string text;
    for (std::size_t i = 0; i < tovrik::max_passwords; ++i)
        text += std::to_string(i) + ":" + digest + "\n";
    EXPECT_EQ(read(text).passwords.size(), tovrik::max_passwords);
    EXPECT_EQ(read(text + "more:" + digest).mistakes,
              texts{path() + ":4097: there are more than 4096 passwords"});
}

TEST(password_label, is_found_by_the_whole_digest_only)
{
    const std::vector<tovrik::password> passwords = {
        {"first", std::string(32, '0')}, {"second", digest}, {"third", std::string(31, '0') + "1"}};
    EXPECT_EQ(tovrik::password_label_of(passwords, std::string(32, '0')), "first");
    EXPECT_EQ(tovrik::password_label_of(passwords, digest), "second");
    EXPECT_EQ(tovrik::password_label_of(passwords, std::string(31, '0') + "1"), "third");
    for (std::size_t at = 0; at < digest.size(); ++at) {
        std::string other = digest;
        other[at] = other[at] == 'f' ? 'e' : 'f';
        EXPECT_EQ(tovrik::password_label_of(passwords, other), "") << at;
    }
    for (const std::string& other : {std::string{}, digest.substr(1), digest + "0"})
        EXPECT_EQ(tovrik::password_label_of(passwords, other), "");
    EXPECT_EQ(tovrik::password_label_of({}, digest), "");
}

/// A locale for one test; the C locale again after it.
class locale_for_test
{
public:
    explicit locale_for_test(const char* name) : is_set(std::setlocale(LC_CTYPE, name) != nullptr)
    {
    }
    ~locale_for_test()
    {
        std::setlocale(LC_CTYPE, "C");
    }
    locale_for_test(const locale_for_test&) = delete;
    locale_for_test& operator=(const locale_for_test&) = delete;
    const bool is_set;
};

TEST(typed_password, becomes_the_bytes_that_a_client_would_send)
{
    const locale_for_test utf8{"C.UTF-8"};
    ASSERT_TRUE(utf8.is_set);
    EXPECT_EQ(tovrik::typed_password_of("abc ~").bytes, "abc ~");
    EXPECT_EQ(tovrik::typed_password_of("M\xC3\xBCnchen").bytes, "M\xFCnchen");
    std::string longest;
    for (int i = 0; i < 39; ++i)
        longest += "\xC3\xBC";
    EXPECT_EQ(tovrik::typed_password_of(longest).bytes, std::string(39, '\xFC'));
}

TEST(typed_password, is_refused_when_nobody_can_type_it)
{
    const locale_for_test utf8{"C.UTF-8"};
    ASSERT_TRUE(utf8.is_set);
    const std::string no_place = "it has a character that cannot be typed into the client";
    const struct {
        std::string typed;
        std::string error;
    } rows[] = {{"", "a password cannot be empty"},
                {std::string(40, 'x'), "the client takes at most 39 characters"},
                {"a\tb", no_place},
                {"a\x1b[A", no_place},
                {"a\x7f", no_place},
                {"a\xC2\x85", no_place},
                {"\xE2\x82\xAC", no_place},
                {"\xE6\x97\xA5", no_place},
                {"\xFF", no_place},
                {"a\xC3", no_place}};
    for (const auto& row : rows) {
        const auto made = tovrik::typed_password_of(row.typed);
        EXPECT_EQ(made.error, row.error) << row.typed;
        EXPECT_EQ(made.bytes, "") << row.typed;
    }
}

TEST(typed_password, has_plain_letters_only_where_the_locale_has_no_others)
{
    const locale_for_test plain{"C"};
    EXPECT_EQ(tovrik::typed_password_of("abc").bytes, "abc");
    EXPECT_NE(tovrik::typed_password_of("\xFC").error, "");
}

} // namespace
