// server_registry_test.cpp - the order of the servers, which are added, and what is released.
#include "data/server_registry.hpp"

#include "base/owners.hpp"
#include "data/text.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using unique_collection = std::unique_ptr<collection, releaser<collection_destroy>>;
using unique_entry = std::unique_ptr<server_entry, releaser<server_entry_free>>;

unique_entry make_entry(const char* name, std::int32_t port)
{
    auto* made = static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)));
    made->ServerName = str_dup(name);
    made->ServerPort = port;
    return unique_entry(made);
}

/// Adds an entry; releases it if it was not added.
std::int32_t add_entry(const unique_collection& servers, const char* name, std::int32_t port)
{
    unique_entry entry = make_entry(name, port);
    const std::int32_t result = server_add(servers.get(), entry.get());
    if (result == -1)
        static_cast<void>(entry.release());
    return result;
}

std::vector<std::string> list_names_and_ports(const unique_collection& servers)
{
    std::vector<std::string> all;
    for (std::int32_t index = 0; index < servers->count; ++index) {
        const server_entry* server = server_at(servers.get(), index);
        all.push_back(std::string(server->ServerName) + ":" + std::to_string(server->ServerPort));
    }
    return all;
}

TEST(server_collection_new, makes_an_empty_sorted_collection_of_entries)
{
    const unique_collection servers(server_collection_new());
    ASSERT_TRUE(servers);
    EXPECT_EQ(servers->count, 0);
    EXPECT_EQ(servers->capacity, 10);
    EXPECT_EQ(servers->grow_step, 5);
    EXPECT_FALSE(servers->allow_duplicates);
    EXPECT_EQ(servers->compare, server_compare);
    EXPECT_EQ(servers->free_item, server_entry_free);
    EXPECT_EQ(servers->key_of(servers.get()), servers.get());
}

TEST(server_entry, holds_its_configured_fields_first_and_in_order)
{
    static_assert(std::is_standard_layout_v<server_entry>);
    EXPECT_EQ(offsetof(server_entry, ServerName), 0U);
    EXPECT_EQ(offsetof(server_entry, ServerAlias), 1 * sizeof(void*));
    EXPECT_EQ(offsetof(server_entry, Location), 2 * sizeof(void*));
    EXPECT_EQ(offsetof(server_entry, Info), 3 * sizeof(void*));
    EXPECT_EQ(offsetof(server_entry, server_uuid), 4 * sizeof(void*));
    EXPECT_EQ(offsetof(server_entry, server_version), 5 * sizeof(void*));
    EXPECT_EQ(offsetof(server_entry, Password), 6 * sizeof(void*));
    EXPECT_EQ(offsetof(server_entry, UseEMail), 7 * sizeof(void*));
    EXPECT_EQ(offsetof(server_entry, SubCode), 8 * sizeof(void*));
    EXPECT_EQ(offsetof(server_entry, report_buffer), 9 * sizeof(void*));
    EXPECT_EQ(offsetof(server_entry, ServerPort), 10 * sizeof(void*));
}

TEST(server_compare, puts_names_in_descending_and_ports_in_ascending_order)
{
    constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    const struct {
        const char* left;
        std::int32_t left_port;
        const char* right;
        std::int32_t right_port;
        int sign;
    } rows[] = {
        {"b", 1, "a", 2, -1},
        {"a", 1, "b", 1, 1},
        {"a", 1, "a", 1, 0},
        {"a", 1, "a", 2, -1},
        {"a", 2, "a", 1, 1},
        {"a", 0, "a", 2202, -1},
        {"\xE4", 1, "z", 1, -1},
        {"aa", 1, "a", 1, -1},
        {"a", 1, "A", 1, -1},
        {"a", highest, "a", lowest, 1},
        {"a", lowest, "a", highest, -1},
    };
    for (const auto& row : rows) {
        const unique_entry left = make_entry(row.left, row.left_port);
        const unique_entry right = make_entry(row.right, row.right_port);
        const int order = server_compare(left.get(), right.get());
        EXPECT_EQ((order > 0) - (order < 0), row.sign)
            << row.left << ":" << row.left_port << " and " << row.right << ":" << row.right_port;
    }
}

TEST(server_add, keeps_the_order_and_tells_the_place_of_a_known_server)
{
    const unique_collection servers(server_collection_new());
    EXPECT_EQ(add_entry(servers, "b.example", 2202), -1);
    EXPECT_EQ(add_entry(servers, "a.example", 2202), -1);
    EXPECT_EQ(add_entry(servers, "c.example", 2203), -1);
    EXPECT_EQ(add_entry(servers, "c.example", 2202), -1);
    const std::vector<std::string> expected = {"c.example:2202", "c.example:2203", "b.example:2202",
                                               "a.example:2202"};
    EXPECT_EQ(list_names_and_ports(servers), expected);
    EXPECT_EQ(add_entry(servers, "c.example", 2203), 1);
    EXPECT_EQ(add_entry(servers, "a.example", 2202), 3);
    EXPECT_EQ(list_names_and_ports(servers), expected);
}

TEST(server_add, treats_port_0_and_the_default_port_as_two_servers)
{
    const unique_collection servers(server_collection_new());
    EXPECT_EQ(add_entry(servers, "a", 0), -1);
    EXPECT_EQ(add_entry(servers, "a", 2202), -1);
    EXPECT_EQ(list_names_and_ports(servers), (std::vector<std::string>{"a:0", "a:2202"}));
}

TEST(server_add, refuses_an_entry_without_a_name)
{
    const unique_collection servers(server_collection_new());
    EXPECT_EQ(server_add(servers.get(), nullptr), -2);
    const unique_entry nameless = make_entry(nullptr, 2202);
    EXPECT_EQ(server_add(servers.get(), nameless.get()), -2);
    EXPECT_EQ(servers->count, 0);
}

TEST(server_add, does_not_report_a_collection_that_cannot_grow)
{
    const unique_collection servers(server_collection_new());
    servers->grow_step = 0;
    for (int port = 1; port <= 10; ++port)
        ASSERT_EQ(add_entry(servers, "a", port), -1);
    const unique_entry left_over = make_entry("a", 11);
    EXPECT_EQ(server_add(servers.get(), left_over.get()), -1);
    EXPECT_EQ(servers->count, 10);
}

TEST(server_add_or_free, releases_what_the_collection_does_not_take)
{
    const unique_collection servers(server_collection_new());
    servers->grow_step = 0;
    for (int port = 1; port <= 12; ++port)
        EXPECT_EQ(server_add_or_free(servers.get(), make_entry("a", port).release()), port <= 10);
    EXPECT_TRUE(server_add_or_free(servers.get(), make_entry("a", 1).release()));
    EXPECT_TRUE(server_add_or_free(servers.get(), make_entry(nullptr, 1).release()));
    EXPECT_EQ(servers->count, 10);
}

TEST(server_entry_free, leaves_the_mailing_texts_to_their_readers)
{
    unique_entry entry = make_entry("a", 1);
    for (char** text : {&entry->ServerAlias, &entry->Location, &entry->Info, &entry->server_uuid,
                        &entry->server_version, &entry->Password})
        *text = str_dup("released");
    const heap_text address(entry->UseEMail = str_dup("someone@example"));
    const heap_text code(entry->SubCode = str_dup("code"));
    entry.reset();
    EXPECT_STREQ(address.get(), "someone@example");
    EXPECT_STREQ(code.get(), "code");
}

TEST(server_at, gives_nothing_outside_the_collection)
{
    const unique_collection servers(server_collection_new());
    EXPECT_EQ(server_at(servers.get(), 0), nullptr);
    add_entry(servers, "a", 1);
    EXPECT_STREQ(server_at(servers.get(), 0)->ServerName, "a");
    EXPECT_EQ(server_at(servers.get(), -1), nullptr);
    EXPECT_EQ(server_at(servers.get(), 1), nullptr);
    EXPECT_EQ(server_at(nullptr, 0), nullptr);
}

TEST(server_entry, is_shown_by_its_alias_and_its_real_port)
{
    const unique_entry entry = make_entry("host.example", 0);
    EXPECT_STREQ(server_display_name(*entry), "host.example");
    EXPECT_EQ(server_port(*entry), 2202);
    entry->ServerAlias = str_dup("Home");
    entry->ServerPort = 4000;
    EXPECT_STREQ(server_display_name(*entry), "Home");
    EXPECT_EQ(server_port(*entry), 4000);
}

} // namespace
