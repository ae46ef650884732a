// tovrikd_place.hpp - tovrikd as its owner runs it: a configuration in a folder of its own, the
// program, and what its receiver hears.
#pragma once

#include "unit/sim_program.hpp"
#include "unit/sim_raw_client.hpp"

#include "base/owners.hpp"
#include "support/temp_home.hpp"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>

#include <memory>
#include <string>

/// What a decoder prints of a message.
inline std::string heard_line(const std::string& text = "HELLO")
{
    return R"({"timestamp":1767609000.0,"station_id":"roof","freq":131.725,"level":-12.5,)"
           R"("mode":"2","label":"H1","block_id":"3","tail":".D-AIQA","flight":"LH0400",)"
           R"("msgno":"M01A","text":")" +
           text + "\"}";
}

class tovrikd_place
{
public:
    /// `more`: keys and tables besides those of every test.
    void write_configuration(const std::string& more = "") const
    {
        home.write_file("tovrikd.toml",
                        "name = \"Home\"\nport = " + std::to_string(port) +
                            "\nstate_directory = \"" + home.path_of("state") + "\"\n" + more +
                            "\n[services]\nmailing = " + (offers_mailings ? "true\n" : "false\n") +
                            "[mail]\ncommand = \"/bin/true\"\nfrom = \"tovrikd@example.org\"\n"
                            "[http]\nport = " +
                            std::to_string(web_port) + "\n" +
                            (input.empty() ? "" : "[[input]]\n" + input));
    }

    /// Starts the program. It is killed when the result goes.
    std::unique_ptr<sim_program> launch() const
    {
        return std::make_unique<sim_program>(
            std::vector<std::string>{"--config", home.path_of("tovrikd.toml")}, nullptr, -1, -1,
            TOVRIKD_BINARY);
    }

    /// Starts the program, and waits until it listens. If its port is 0, sets it.
    std::unique_ptr<sim_program> start()
    {
        auto program = launch();
        const std::string begin = "tovrikd: Home listens on port ";
        const std::string said = program->complaint_line();
        if (port == 0 && said.starts_with(begin))
            port = static_cast<std::uint16_t>(std::stoi(said.substr(begin.size())));
        EXPECT_EQ(said, begin + std::to_string(port));
        if (web_port != 0) {
            EXPECT_EQ(program->complaint_line(),
                      "tovrikd: the web is answered on port " + std::to_string(web_port));
        }
        return program;
    }

    /// Sends a datagram as a receiver does.
    void hear(const std::string& line) const
    {
        const unique_fd fd{socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(input_port);
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(sendto(fd.get(), line.data(), line.size(), 0,
                         reinterpret_cast<const sockaddr*>(&to), sizeof to),
                  static_cast<ssize_t>(line.size()));
    }

    /// The answer of the small server for the web.
    std::string ask_web(const std::string& path) const
    {
        sim_raw_client asker{web_port};
        asker.send_bytes("GET " + path + " HTTP/1.0\r\nHost: localhost\r\n\r\n");
        std::string answer;
        char block[4096];
        while (wait_for_socket(asker.fd, POLLIN, default_patience)) {
            const ssize_t count = recv(asker.fd, block, sizeof block, 0);
            if (count <= 0)
                break;
            answer.append(block, static_cast<std::size_t>(count));
        }
        return answer;
    }

    temp_home home;
    std::uint16_t port = free_port();
    std::uint16_t web_port = free_port(); ///< 0: it does not answer the web
    std::uint16_t input_port = free_port();
    bool offers_mailings = false;
    std::string input = "type = \"udp\"\nname = \"roof\"\nport = " + std::to_string(input_port) +
                        "\n"; ///< the keys of its one input; empty: it has none
};
