// directory_session.hpp - the client, and the directory that its lists of servers come from.
//
// The directory is a scripted server; the program that users get is led to its port. Lists, lines
// and answers are texts, so that a test can bend every byte of them.
#pragma once

#include "e2e/client_session.hpp"

/// What the client asks the directory, byte for byte.
extern const std::string directory_request;

/// What stands in a directory's answer before the list.
extern const std::string answer_header;

/// One line of a list, its line feed included, with something in all fields that are of no use.
std::string directory_line(const server_settings& server);

/// `count` lines, from "n000001.example" on or, with a prefix, from that one's first.
std::string many_lines(int count, const std::string& prefix = "n");

/// The message at the end of a fetch.
std::string fetched(int count);

/// How to start a client whose directory is at `port` of this machine.
client_start with_directory(int port, client_start how = {});

/// A client with one known server, "alpha", and a directory.
class directory_test : public testing::Test
{
protected:
    directory_test();

    /// Starts the client with these settings.
    [[nodiscard]] testing::AssertionResult start(const client_start& how = {});
    /// ^R, and reads the request. None, with a failure noted, if it does not come.
    std::optional<server_connection> fetch();
    /// Takes the client that comes to the directory, and its request; likewise.
    std::optional<server_connection> take_request();
    /// ^R, sends `answer`, closes, and waits for the message about `count` servers.
    [[nodiscard]] testing::AssertionResult fetch_answered(const std::string& answer, int count);
    [[nodiscard]] testing::AssertionResult wait_for_fetched(int count);
    /// Leaves; what was saved must be the settings with these servers, in this order.
    void expect_saved(const std::vector<server_settings>& servers);

    scripted_server directory;
    client_settings settings = with_aliases({"alpha"});
    client_session client;
};
