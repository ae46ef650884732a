// config_fault_test.cpp - the configuration is not lost, whatever fails while it is read or saved.
#include "unit/config_fixture.hpp"
#include "unit/own_faults.hpp"
#include "unit/unprivileged.hpp"

#include "data/text.hpp"
#include "support/config_text.hpp"
#include "support/small_disk.hpp"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace
{

constexpr const char* config = "ncursesclient.conf";

class config_faults : public config_test
{
protected:
    config_faults()
    {
        app_state.setting_flags = SaveOnExit | ACARSLog;
        after.save_on_exit = after.acars_log = true;
        write_old();
    }
    void write_old() const
    {
        home.write_config(before);
        EXPECT_EQ(chmod(home.path_of(config).c_str(), 0640), 0);
    }
    void expect_config(const std::string& text) const
    {
        EXPECT_EQ(home.read_config(), text);
        struct stat status = {};
        EXPECT_EQ(stat(home.path_of(config).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0640U);
        EXPECT_EQ(home.files(), std::vector<std::string>{config});
    }

    std::string before = config_text(with_one_server()) + "the old file\n";
    client_settings after;

private:
    static client_settings with_one_server()
    {
        client_settings settings;
        settings.save_on_exit = true;
        settings.servers = {{.name = "a.example"}};
        return settings;
    }
};

TEST_F(config_faults, keep_the_old_file_during_a_save)
{
    const fault rows[] = {
        {faulty_call::make_unique, ENOSPC},
        {faulty_call::make_unique, EMFILE},
        {faulty_call::make_unique, EIO},
        {faulty_call::write, ENOSPC},
        {faulty_call::write, EIO},
        {faulty_call::write, EDQUOT, "", 3},
        {faulty_call::sync, EIO},
        {faulty_call::sync, ENOSPC},

        {faulty_call::rename, EIO},
        {faulty_call::rename, ENOSPC},
        {faulty_call::set_mode, EIO},
        {faulty_call::set_owner, EIO},
        {faulty_call::read, EIO, config},
        {faulty_call::read, end_of_file, config},
        {faulty_call::status, EIO, config, 1},
    };
    for (const fault& row : rows) {
        fault_layout_in_use()->piece = 50;
        const own_fault failing(row);
        save();
        EXPECT_EQ(own_fault::hits(), 1) << static_cast<int>(row.call);
        expect_config(before);
    }
    fault_layout_in_use()->piece = 0;
    save();
    expect_config(config_text(after));
}

TEST_F(config_faults, do_not_prevent_the_new_file_if_they_do_not_matter)
{
    const fault rows[] = {
        {faulty_call::write, EINTR, "", 0, 3},
        {faulty_call::write, short_count, "", 0, every_call},
        {faulty_call::sync, EINTR},
        {faulty_call::sync, EINTR, "", 1},
        {faulty_call::sync, EIO, "", 1}, // of the folder
        {faulty_call::rename, EINTR},
        {faulty_call::make_unique, EINTR, "", 0, 2},
        {faulty_call::close, EIO, config, 0, every_call},
        {faulty_call::close, EINTR, config, 0, every_call},
        {faulty_call::lock, ENOLCK},
        {faulty_call::lock, EWOULDBLOCK, "", 0, 2},
        {faulty_call::read, EINTR, config},
        {faulty_call::read, short_count, config, 0, every_call},
        {faulty_call::open, EINTR, config},
        {faulty_call::set_owner, EPERM},
        {faulty_call::set_owner, EINTR},
        {faulty_call::set_mode, EINTR},
    };
    for (const fault& row : rows) {
        write_old();
        {
            const own_fault failing(row);
            save();
            EXPECT_GE(own_fault::hits(), 1) << static_cast<int>(row.call);
        }
        expect_config(config_text(after));
    }
}

TEST_F(config_faults, prevent_a_partly_loaded_file_from_being_replaced)
{
    const fault rows[] = {
        {faulty_call::read, EIO, config},
        {faulty_call::read, end_of_file, config}, // somebody else is writing it
        {faulty_call::status, EIO, config, 1},
        {faulty_call::open, EIO, config},
        {faulty_call::open, EMFILE, config},
        {faulty_call::open, EACCES, config},
    };
    for (const fault& row : rows) {
        {
            const own_fault failing(row);
            config_load();
            EXPECT_EQ(own_fault::hits(), 1);
        }
        EXPECT_EQ(app_state.servers->count, 0);
        save();
        expect_config(before);
    }
    config_load();
    EXPECT_EQ(app_state.servers->count, 1);
}

TEST_F(config_faults, keep_a_file_whose_home_folder_could_not_be_reached_at_the_start)
{
    for (const std::string& path : {home.path(), home.path_of(config), elsewhere.path()})
        ASSERT_TRUE(give_to_nobody(path.c_str()));
    EXPECT_TRUE(unprivileged([this] {
        if (chmod(home.path().c_str(), 0) != 0)
            return false;
        config_load();
        const bool is_back = chmod(home.path().c_str(), 0700) == 0;
        save();
        return is_back && is_in(home);
    }));
    expect_config(before);
}

TEST_F(config_faults, keep_the_configuration_of_a_home_folder_that_comes_later)
{
    // Like a folder that is mounted while the program runs.
    const std::string late = home.path_of("late");
    const std::string late_config = std::string{"late/"} + config;
    setenv("HOME", late.c_str(), 1);
    config_load();
    home.make_folder("late");
    home.write_file(late_config, before);
    save();
    EXPECT_EQ(home.read_file(late_config), before);
}

TEST_F(config_faults, do_no_harm_when_they_interrupt_a_load)
{
    const fault rows[] = {
        {faulty_call::open, EINTR, config},
        {faulty_call::read, EINTR, config, 0, 3},
        {faulty_call::read, short_count, config, 0, every_call},
    };
    for (const fault& row : rows) {
        const own_fault failing(row);
        config_load();
        EXPECT_EQ(app_state.servers->count, 1);
        collection_destroy(app_state.servers);
        app_state.servers = server_collection_new();
        for (std::size_t index = 0; index < setting_text_count; ++index)
            std::free(std::exchange(app_state.setting_texts[index], nullptr));
    }
}

TEST_F(config_faults, keep_the_old_file_at_every_size_limit)
{
    const std::size_t size = config_text(after).size();
    for (std::size_t limit = 0; limit < size; limit += 7) {
        {
            const file_size_limit files(limit);
            save();
        }
        expect_config(before);
    }
    const file_size_limit files(size);
    save();
    expect_config(config_text(after));
}

/// The home folder is on a full disk.
class config_on_a_full_disk : public config_faults
{
protected:
    void SetUp() override
    {
        if (!disk.is_there())
            GTEST_SKIP() << "nothing may be mounted here";
        write_old();
    }
    small_disk disk{home.path(), 64UL * 1024};
};

TEST_F(config_on_a_full_disk, stays_as_it_was_and_is_saved_when_there_is_space)
{
    ASSERT_TRUE(disk.fill());
    save();
    EXPECT_EQ(home.read_config(), before);
    EXPECT_EQ(home.files(), (std::vector<std::string>{"filler", config}));
    disk.empty();
    save();
    expect_config(config_text(after));
}

TEST_F(config_on_a_full_disk, stays_as_it_was_where_it_must_be_written_in_place)
{
    app_state.setting_texts[LogFilePath] = str_dup(std::string(20'000, 'l').c_str());
    ASSERT_TRUE(disk.fill());
    // As in a folder that takes no new file.
    const own_fault refused({faulty_call::make_unique, EACCES, "", 0, every_call});
    save();
    EXPECT_EQ(home.read_config(), before);
    disk.empty();
    save();
    after.log_folder = std::string(20'000, 'l');
    expect_config(config_text(after));
    // Shorter again: nothing of the longer text is left after it.
    app_state.setting_texts[LogFilePath][1] = '\0';
    after.log_folder = "l";
    save();
    expect_config(config_text(after));
}

} // namespace
