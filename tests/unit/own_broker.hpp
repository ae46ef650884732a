// own_broker.hpp - a real MQTT broker for one test, and clients that publish there.
#pragma once

#include "base/owners.hpp"
#include "server/base/clock.hpp"
#include "support/loopback.hpp"
#include "support/patience.hpp"
#include "support/temp_home.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mosquitto.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

/// A broker on a port of this machine.
class own_broker
{
public:
    /// Whether there is one to start.
    static bool is_installed()
    {
        return std::system("PATH=$PATH:/usr/sbin command -v mosquitto >/dev/null") == 0;
    }

    /// `settings`: further lines of its configuration.
    own_broker(const temp_home& home, std::uint16_t chosen_port, const std::string& settings)
        : port(chosen_port)
    {
        home.write_file("broker.conf", "listener " + std::to_string(port) + " 127.0.0.1\n" +
                                           "log_dest none\npersistence false\n" + settings);
        const std::string file = home.path_of("broker.conf");
        pid = fork();
        if (pid == 0) {
            // In some systems it is not in the path of users.
            for (const char* name : {"/usr/sbin/mosquitto", "mosquitto"})
                execlp(name, "mosquitto", "-c", file.c_str(), nullptr);
            _exit(127);
        }
    }
    own_broker(const own_broker&) = delete;
    own_broker& operator=(const own_broker&) = delete;
    ~own_broker()
    {
        kill(pid, SIGKILL);
        int status = 0;
        waitpid(pid, &status, 0);
    }

    std::uint16_t port;

    /// The settings that let everybody in.
    static constexpr const char* anyone = "allow_anonymous true\n";

private:
    pid_t pid = -1;
};

/// A client that publishes. It waits for the broker to start.
class own_publisher
{
public:
    explicit own_publisher(const own_broker& broker, const char* user = nullptr,
                           const char* password = nullptr)
    {
        mosquitto_lib_init();
        client.reset(mosquitto_new(nullptr, true, nullptr));
        mosquitto_username_pw_set(client.get(), user, password);
        const auto end = tovrik::steady_clock::now() + default_patience;
        while (mosquitto_connect(client.get(), "127.0.0.1", broker.port, 60) != 0) {
            if (tovrik::steady_clock::now() > end)
                break;
            usleep(10000);
        }
    }

    void publish(const std::string& topic, const std::string& bytes, bool is_retained = false)
    {
        EXPECT_EQ(mosquitto_publish(client.get(), nullptr, topic.c_str(),
                                    static_cast<int>(bytes.size()), bytes.data(), 1, is_retained),
                  0);
        pump();
    }
    void pump()
    {
        mosquitto_loop(client.get(), 0, 1);
    }

private:
    std::unique_ptr<mosquitto, releaser<mosquitto_destroy>> client;
};
