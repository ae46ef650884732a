// config_memory_test.cpp - what happens to the configuration when the program is out of memory.
#include "unit/config_fixture.hpp"
#include "unit/failing_memory.hpp"

#include "data/text.hpp"
#include "support/config_text.hpp"

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace
{

class config_out_of_memory : public config_test
{
protected:
    config_out_of_memory()
    {
        settings.save_on_exit = settings.acars_log = true;
        settings.log_folder = "logs";
        // Without subcode and address, which the program keeps until its end.
        for (int index = 9; index > 0; --index)
            settings.servers.push_back({.name = "host" + std::to_string(index),
                                        .port = std::to_string(4000 + index),
                                        .alias = "alias" + std::to_string(index),
                                        .location = "location" + std::to_string(index)});
    }

    /// Forgets what was loaded, and leaves the home folder.
    void forget() const
    {
        collection_destroy(app_state.servers);
        app_state.servers = server_collection_new();
        app_state.setting_flags = 0;
        for (std::size_t index = 0; index < setting_text_count; ++index)
            std::free(std::exchange(app_state.setting_texts[index], nullptr));
        EXPECT_EQ(chdir(elsewhere.path().c_str()), 0);
    }

    void begin_again(const std::string& text) const
    {
        forget();
        home.write_config(text);
    }

    bool has_loaded_nothing() const
    {
        return app_state.servers->count == 0 && app_state.setting_flags == 0 &&
               app_state.setting_texts[LogFilePath] == nullptr;
    }

    /// Every server is in the file; its texts may be missing, but none may differ.
    void expect_known_servers() const
    {
        for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
            const server_entry* entry = server_at(app_state.servers, index);
            const auto known = std::ranges::find(settings.servers, std::string{entry->ServerName},
                                                 &server_settings::name);
            ASSERT_NE(known, settings.servers.end()) << entry->ServerName;
            if (entry->ServerAlias != nullptr) {
                EXPECT_EQ(entry->ServerAlias, known->alias);
            }
            if (entry->Location != nullptr) {
                EXPECT_EQ(entry->Location, known->location);
            }
        }
    }

    void expect_all_loaded() const
    {
        EXPECT_EQ(app_state.servers->count, std::ssize(settings.servers));
        EXPECT_EQ(app_state.setting_flags, SaveOnExit | ACARSLog);
        EXPECT_STREQ(app_state.setting_texts[LogFilePath], "logs");
        EXPECT_TRUE(is_in(elsewhere));
    }

    /// Loads a file while each allocation fails in turn. Returns how often less than everything was
    /// loaded; a save must then not replace the file.
    int incomplete_loads(const std::string& whole, const std::function<bool()>& has_loaded_all)
    {
        int incomplete = 0;
        try_each_allocation({
            .prepare = [&] { begin_again(whole); },
            .call = [] { config_load(); },
            .expect_after_failure =
                [&](memory_failure, long) {
                    if (has_loaded_all())
                        return;
                    ++incomplete;
                    save();
                    EXPECT_EQ(home.read_config(), whole);
                },
            .expect_success = [&] { EXPECT_TRUE(has_loaded_all()); },
        });
        return incomplete;
    }

    client_settings settings;
};

TEST_F(config_out_of_memory, loads_nothing_that_is_not_in_the_file)
{
    home.write_config(config_text(settings));
    try_each_allocation({
        .prepare = [&] { forget(); },
        .call = [] { config_load(); },
        .expect_after_failure =
            [&](memory_failure, long) {
                expect_known_servers();
                EXPECT_EQ(app_state.setting_flags & ~(SaveOnExit | ACARSLog), 0U);
                EXPECT_TRUE(is_in(elsewhere) || has_loaded_nothing());
            },
        .expect_success = [&] { expect_all_loaded(); },
    });
}

TEST_F(config_out_of_memory, stays_in_the_home_folder_if_only_the_file_gets_no_memory)
{
    home.write_config(config_text(settings));
    int stays = 0;
    try_each_allocation({
        .prepare = [&] { forget(); },
        .call = [] { config_load(); },
        .expect_after_failure =
            [&](memory_failure failure, long) {
                if (is_in(home)) {
                    EXPECT_TRUE(has_loaded_nothing());
                    stays += failure == memory_failure::once ? 1 : 0;
                }
            },
        .expect_success = [&] { EXPECT_TRUE(is_in(elsewhere)); },
    });
    EXPECT_EQ(stays, 1);
}

TEST_F(config_out_of_memory, does_not_replace_a_file_that_it_could_not_load)
{
    const std::string whole = config_text(settings);
    try_each_allocation({
        .prepare = [&] { begin_again(whole); },
        .call = [] { config_load(); },
        .expect_after_failure =
            [&](memory_failure failure, long) {
                // A single failure may have cost only a line in the status pane.
                if (failure == memory_failure::once && !has_loaded_nothing())
                    return;
                save();
                EXPECT_EQ(home.read_config(), whole);
            },
        .expect_success =
            [&] {
                expect_all_loaded();
                app_state.setting_flags |= SaveToOne;
                save();
                EXPECT_NE(home.read_config(), whole);
            },
    });
}

TEST_F(config_out_of_memory, does_not_replace_a_file_after_losing_a_server_or_a_text_of_it)
{
    // Short enough for one block of nodes, and without folders, which would also be lost.
    const std::string whole =
        "<?xml version=\"1.0\"?><clientconf>"
        "<Server1><ServerName>a</ServerName><ServerAlias>one</ServerAlias></Server1>"
        "<Server2><ServerName>b</ServerName><ServerAlias>two</ServerAlias></Server2></clientconf>";
    const auto has_loaded_all = [] {
        const server_entry* first = server_at(app_state.servers, 1);
        return first != nullptr && first->ServerAlias != nullptr &&
               server_at(app_state.servers, 0)->ServerAlias != nullptr;
    };
    EXPECT_GT(incomplete_loads(whole, has_loaded_all), 10);
}

TEST_F(config_out_of_memory, does_not_replace_a_long_file_after_losing_any_part_of_it)
{
    // More servers than the list has slots for at first.
    for (int index = 12; index > 9; --index)
        settings.servers.insert(settings.servers.begin(),
                                {.name = "host9" + std::to_string(index), .alias = "alias"});
    const std::string whole = config_text(settings);
    const auto has_loaded_all = [&] {
        std::ptrdiff_t texts = 0;
        for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
            const server_entry* entry = server_at(app_state.servers, index);
            texts += (entry->ServerAlias != nullptr ? 1 : 0) + (entry->Location != nullptr ? 1 : 0);
        }
        return app_state.servers->count == std::ssize(settings.servers) && texts == 12 + 9 &&
               app_state.setting_flags == (SaveOnExit | ACARSLog) &&
               app_state.setting_texts[LogFilePath] != nullptr &&
               app_state.setting_texts[ReportPath] != nullptr;
    };
    EXPECT_GT(incomplete_loads(whole, has_loaded_all), 50);
}

TEST_F(config_out_of_memory, loads_the_rest_without_memory_for_folders)
{
    home.write_config(config_text(settings));
    char** texts = std::exchange(app_state.setting_texts, nullptr);
    config_load();
    EXPECT_EQ(app_state.setting_texts, nullptr);
    app_state.setting_texts = texts;
    EXPECT_EQ(app_state.servers->count, std::ssize(settings.servers));
    EXPECT_EQ(app_state.setting_flags, SaveOnExit | ACARSLog);
}

TEST_F(config_out_of_memory, saves_all_or_nothing)
{
    const std::string before = config_text({});
    for (const std::size_t folder_length : {4U, 20'000U}) {
        SCOPED_TRACE(folder_length);
        forget();
        load(config_text(settings));
        settings.log_folder = std::string(folder_length, 'l');
        std::free(app_state.setting_texts[LogFilePath]);
        app_state.setting_texts[LogFilePath] = str_dup(settings.log_folder.c_str());
        const std::string after = config_text(settings);
        bool is_saved = false;
        try_each_allocation({
            .prepare = [&] { home.write_config(before); },
            .call = [] { save(); },
            .expect_after_failure =
                [&](memory_failure, long) {
                    const std::optional<std::string> found = home.read_config();
                    EXPECT_TRUE(found == before || found == after) << found.value_or("no file");
                    EXPECT_EQ(home.files().size(), 1U);
                },
            .expect_success =
                [&] {
                    EXPECT_EQ(home.read_config(), after);
                    is_saved = true;
                },
        });
        EXPECT_TRUE(is_saved);
    }
}

} // namespace
