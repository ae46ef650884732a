// config_fixture.hpp - a home folder, a working folder and a headless screen, for tests of the
// configuration file.
#pragma once

#include "base/owners.hpp"
#include "data/config_load.hpp"
#include "data/config_save.hpp"
#include "support/temp_home.hpp"
#include "unit/headless_screen.hpp"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

/// HOME is `home`, the working folder is `elsewhere`; the test restores both at its end.
class config_test : public testing::Test
{
protected:
    config_test()
    {
        setenv("HOME", home.path().c_str(), 1);
        EXPECT_EQ(chdir(elsewhere.path().c_str()), 0);
    }
    ~config_test() override
    {
        EXPECT_EQ(fchdir(former_folder.get()), 0);
        if (former_home.empty())
            unsetenv("HOME");
        else
            setenv("HOME", former_home.c_str(), 1);
    }
    config_test(const config_test&) = delete;
    config_test& operator=(const config_test&) = delete;

    void load(const std::string& text) const
    {
        home.write_config(text);
        config_load();
    }

    /// Saves. Memory that the program keeps until its end does not count as a leak here.
    static void save()
    {
#if defined(__SANITIZE_ADDRESS__)
        const __lsan::ScopedDisabler kept_until_exit;
#endif
        config_save();
    }

    bool is_in(const temp_home& folder) const
    {
        return std::filesystem::current_path() == std::filesystem::canonical(folder.path());
    }

    temp_home home;
    temp_home elsewhere;
    headless_screen screen;

private:
    unique_fd former_folder{open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)};
    std::string former_home = std::getenv("HOME") != nullptr ? std::getenv("HOME") : "";
};
