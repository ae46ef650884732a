// sim_identity_test.cpp - what a server's identity is made of.
#include "sim_raw_client.hpp"

#include "server/services/server_identity.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <set>
#include <string>
#include <unistd.h>

namespace
{

std::string host_name()
{
    char name[256] = {};
    EXPECT_EQ(gethostname(name, sizeof name), 0);
    return name;
}

class sim_machine : public testing::TestWithParam<std::pair<const char*, std::string>>
{
};

TEST_P(sim_machine, is_told_by_its_file_or_else_by_its_host_name)
{
    const std::string path = testing::TempDir() + "sim_machine_" + std::to_string(getpid());
    std::ofstream{path} << GetParam().first;
    EXPECT_EQ(tovrik::machine_name(path), GetParam().second);
    unlink(path.c_str());
    EXPECT_EQ(tovrik::machine_name(path), host_name()) << "without a file";
}

INSTANTIATE_TEST_SUITE_P(files, sim_machine,
                         testing::Values(std::pair{"0123456789abcdef\n",
                                                   std::string{"0123456789abcdef"}},
                                         std::pair{"", host_name()}, std::pair{"\n", host_name()},
                                         std::pair{"uninitialized\n", host_name()}));

TEST(sim_identity, differs_for_every_machine_name_address_and_port)
{
    std::set<std::string> identities;
    for (const char* machine : {"one", "two"})
        for (const char* name : {"Home", "Roof"})
            for (const char* address : {"127.0.0.1", "0.0.0.0"})
                for (const std::uint16_t port : {std::uint16_t{2202}, std::uint16_t{2203}})
                    identities.insert(
                        tovrik::server_uuid(tovrik::identity_seed(machine, name, address), port));
    EXPECT_EQ(identities.size(), 16U);
}

/// The capabilities of a server of this name at `port`; any free port for 0, which is then set.
std::string capabilities_of(const char* name, std::uint16_t& port)
{
    auto options = quick_server();
    options.name = name;
    options.port = port;
    tovrik::practice_server server{options};
    EXPECT_TRUE(server.start()) << server.error();
    port = server.port();
    sim_raw_client client{port};
    const auto first = client.receive();
    return first ? first->payload : "";
}

TEST(sim_identity, stays_after_a_restart_and_not_under_another_name)
{
    std::uint16_t port = 0;
    const std::string first = capabilities_of("Home", port);
    EXPECT_NE(capabilities_of("Roof", port), first);
    EXPECT_EQ(capabilities_of("Home", port), first);
}

} // namespace
