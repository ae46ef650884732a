// directory_session.hpp - the client and the directory from which it fetches lists of servers.
//
// The directory is a scripted server; the program that users get is redirected to its port. Lists,
// lines and answers are texts, so that a test can change every byte of them.
#pragma once

#include "e2e/client_session.hpp"

/// The client's request to the directory, byte for byte.
extern const std::string directory_request;

/// The part of a directory's answer before the list.
extern const std::string answer_header;

/// One line of a list with its line feed; the fields that are not used are filled too.
std::string directory_line(const server_settings& server);

/// `count` lines, from "n000001.example" on, or from the first name with another prefix.
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
    /// ^R, and reads the request. None, with a failure reported, if it does not come.
    std::optional<server_connection> fetch();
    /// Accepts the client at the directory and reads its request; fails in the same way.
    std::optional<server_connection> take_request();
    /// ^R, sends `answer`, closes, and waits for the message about `count` servers.
    [[nodiscard]] testing::AssertionResult fetch_answered(const std::string& answer, int count);
    [[nodiscard]] testing::AssertionResult wait_for_fetched(int count);
    /// Leaves the client; the saved settings must contain these servers, in this order.
    void expect_saved(const std::vector<server_settings>& servers);

    scripted_server directory;
    client_settings settings = with_aliases({"alpha"});
    client_session client;
};
