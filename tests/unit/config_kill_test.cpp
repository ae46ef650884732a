// config_kill_test.cpp - a client that is killed at any point of a save leaves the old
// configuration or the new one, whole, with its mode.
#include "unit/config_fixture.hpp"
#include "unit/own_faults.hpp"

#include "data/text.hpp"
#include "support/config_text.hpp"
#include "support/patience.hpp"

#include <optional>
#include <set>
#include <string>
#include <sys/stat.h>

namespace
{

/// How finely a save is cut: the most bytes of one write, and the least number of points.
struct density {
    int write_bytes;
    int points;
};
constexpr density dense{32, 250};
constexpr density sparse{128, 80};

/// Tries every point. Under a sanitizer, where processes are so large that they start slowly, it
/// tries only every so many points: sanitizers find nothing in a kill.
constexpr int stride = patience_factor() == 1 ? 1 : 16;

/// The configuration file as found.
struct found_config {
    std::optional<std::string> text;
    mode_t mode = 0;

    bool operator==(const found_config&) const = default;
};

class config_killed : public config_test
{
protected:
    config_killed()
    {
        for (int number = 100; number < 135; ++number) {
            const std::string name = "server" + std::to_string(number) + ".example";
            former.servers.push_back({.name = name});
            auto* entry = static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)));
            entry->ServerName = str_dup(name.c_str());
            EXPECT_EQ(server_add(app_state.servers, entry), -1);
        }
        next = former;
        next.acars_log = true;
        next.log_folder = "a longer folder than before";
        app_state.setting_flags = ACARSLog;
        app_state.setting_texts[LogFilePath] = str_dup(next.log_folder.c_str());
        std::reverse(next.servers.begin(), next.servers.end());
    }

    void write_former(mode_t mode) const
    {
        home.write_config(config_text(former));
        EXPECT_EQ(chmod(home.path_of(file).c_str(), mode), 0);
    }
    found_config found() const
    {
        struct stat status = {};
        if (stat(home.path_of(file).c_str(), &status) != 0)
            return {};
        return {home.read_file(file), status.st_mode & 07777};
    }
    /// Saves over what `prepare` makes and is killed at each point. Returns how often the new file
    /// was there at the end.
    template <typename Preparation>
    int save_and_kill(Preparation prepare, density cut, const found_config& old_one,
                      const found_config& new_one)
    {
        int replaced = 0;
        int step = 1;
        for (bool is_killed = true; is_killed; step += stride) {
            prepare();
            is_killed = killed_at(step, cut.write_bytes, [] { config_save(); });
            const found_config now = found();
            EXPECT_TRUE(now == old_one || now == new_one) << "killed at step " << step;
            EXPECT_TRUE(is_killed || now == new_one);
            // The file itself and what this save left, but nothing from earlier saves.
            EXPECT_LE(home.files().size(), 2U + (is_linked ? 1 : 0)) << "killed at step " << step;
            replaced += now == new_one ? 1 : 0;
            if (HasFailure())
                break;
        }
        EXPECT_GT(step, cut.points);
        return replaced;
    }
    /// Saves once more, without a kill.
    void expect_clean_after_next_save()
    {
        save();
        EXPECT_EQ(found().text, config_text(next));
        EXPECT_EQ(home.files().size(), 1U + (is_linked ? 1 : 0));
    }

    std::string file = "ncursesclient.conf";
    bool is_linked = false;
    client_settings former;
    client_settings next;
};

TEST_F(config_killed, leaves_the_old_file_or_the_new_one)
{
    const found_config old_one{config_text(former), 0640};
    const found_config new_one{config_text(next), 0640};
    const int replaced = save_and_kill([this] { write_former(0640); }, dense, old_one, new_one);
    EXPECT_GE(replaced, 1);
    EXPECT_LE(replaced, 10) << "steps after the rename";
    expect_clean_after_next_save();
}

TEST_F(config_killed, leaves_no_file_or_a_whole_private_one_at_the_first_save)
{
    const auto prepare = [this] { unlink(home.path_of(file).c_str()); };
    const int replaced = save_and_kill(prepare, sparse, {}, {config_text(next), 0600});
    EXPECT_GE(replaced, 1);
    expect_clean_after_next_save();
}

TEST_F(config_killed, leaves_the_link_to_the_file_too)
{
    ASSERT_EQ(symlink("real", home.path_of(file).c_str()), 0);
    is_linked = true;
    const found_config old_one{config_text(former), 0604};
    const int replaced =
        save_and_kill([this] { write_former(0604); }, sparse, old_one, {config_text(next), 0604});
    EXPECT_GE(replaced, 1);
    expect_clean_after_next_save();
    struct stat status = {};
    ASSERT_EQ(lstat(home.path_of(file).c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

} // namespace
