// crowd.hpp - any number of servers on one port, each with an address of its own in 127/8.
//
// Owns a thread that accepts and greets every client and, on request, makes every server send a
// numbered transmission each second, evenly spread over the second.
#pragma once

#include "base/owners.hpp"
#include "support/config_text.hpp"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class crowd
{
public:
    explicit crowd(int count);
    ~crowd();
    crowd(const crowd&) = delete;
    crowd& operator=(const crowd&) = delete;

    /// The entries of a configuration that knows all of them, in the order of the client's list.
    std::vector<server_settings> settings() const;
    /// How many servers have a client that has introduced itself.
    int introduced() const
    {
        return introductions;
    }
    /// Makes every server send one transmission a second, or stops them.
    void talk(bool wanted)
    {
        is_talking = wanted;
    }
    /// How many transmissions each server has sent so far.
    std::vector<std::int64_t> transmissions() const;

private:
    struct member {
        unique_fd client{};
        std::string received{};
        bool is_introduced = false;
        std::int64_t transmissions = 0;
    };

    void run();
    void accept_all();
    void take_in(member& one);
    void send_due();

    unique_fd listener;
    std::vector<member> members;
    mutable std::mutex guard;
    std::atomic<int> introductions = 0;
    std::atomic<bool> is_talking = false;
    std::atomic<bool> stops = false;
    std::int64_t next_due_us = 0; // by the steady clock
    std::size_t next_speaker = 0;
    std::thread thread;
};

/// The name of the crowd's server `index` in the client's list.
std::string crowd_alias(std::size_t index);
