// log_fixture.hpp - one server and an empty folder for its logs.
#pragma once

#include "net/log_files.hpp"
#include "support/temp_home.hpp"
#include "unit/net_fixture.hpp"

#include "base/owners.hpp"

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

/// The working folder is empty; the screen is wide enough for long file names in the status pane.
class log_test : public net_test
{
protected:
    log_test() : net_test(400), entry(add_server("host.example", "srv"))
    {
        EXPECT_EQ(chdir(folder.path().c_str()), 0);
        app_state.setting_flags = ACARSLog;
    }
    ~log_test() override
    {
        EXPECT_EQ(fchdir(former_folder.get()), 0);
    }
    log_test(const log_test&) = delete;
    log_test& operator=(const log_test&) = delete;

    static void set_log_folder(const char* name)
    {
        std::free(app_state.setting_texts[LogFilePath]);
        app_state.setting_texts[LogFilePath] = owned_text(name);
    }

    temp_home folder;
    server_entry& entry;

private:
    unique_fd former_folder{open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)};
};
