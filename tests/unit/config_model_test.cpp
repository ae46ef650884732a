// config_model_test.cpp - the configuration's way into the program and out again, beside its model.
#include "models/config_state.hpp"

#include "data/settings_table.hpp"
#include "data/text.hpp"
#include "support/generated_cases.hpp"
#include "unit/config_fixture.hpp"

#include <utility>

namespace
{

const std::string spare_bytes = "<>/? ?>\n\t0129$%a\xE4\x01\xFF";

/// Folders made meanwhile are in memory, where the system has such a place: syncing thousands of
/// files to a disk takes minutes.
class memory_folders
{
public:
    memory_folders()
    {
        if (access("/dev/shm", W_OK | X_OK) == 0)
            setenv("TMPDIR", "/dev/shm", 1);
    }
    ~memory_folders()
    {
        if (former.empty())
            unsetenv("TMPDIR");
        else
            setenv("TMPDIR", former.c_str(), 1);
    }
    memory_folders(const memory_folders&) = delete;
    memory_folders& operator=(const memory_folders&) = delete;

private:
    std::string former = std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "";
};

std::string make_name(case_choices& choices)
{
    static const std::vector<std::string> names = {"a.example",     "b.example", "c.example",
                                                   "c.example.org", "127.0.0.1", "A.example"};
    return choices.chance(85) ? choices.pick(names) : choices.hostile_text(8);
}

std::string make_value(case_choices& choices)
{
    switch (choices.number(5)) {
    case 0:
        return "";
    case 1:
        return choices.text("<>/ \n", 6);
    case 2:
        return choices.hostile_text(10);
    case 3:
        return choices.chance(10) ? std::string(509 + choices.number(5), 'x') : "y";
    default:
        return choices.text("abc /.@~$%&;", 12);
    }
}

std::string make_port(case_choices& choices)
{
    return choices.pick<std::string>({"2202", "2202", "2202", "2203", "", "x", "0", "-1", "65535",
                                      "65536", " 22", "+7", "22 03", "0x10", "4294967298",
                                      "-99999999999", "99999999999999999999", "2203x"});
}

std::string make_number(case_choices& choices)
{
    return choices.pick<std::string>({"0", "1", "2", "-1", "", "x", "01", "00", " 1", "1x", "x1",
                                      "0x1", "4294967296", "-4294967296", "99999999999999999999"});
}

client_settings make_settings(case_choices& choices)
{
    client_settings made;
    for (bool* flag :
         {&made.acars_log, &made.contact_info, &made.save_passwords, &made.flight_stats,
          &made.save_to_one, &made.no_uplinks, &made.fetch_on_start, &made.save_on_exit})
        *flag = choices.chance(50);
    made.log_folder = make_value(choices);
    made.report_folder = make_value(choices);
    for (std::size_t count = choices.number(4); count > 0; --count)
        made.servers.push_back({.name = make_name(choices),
                                .port = make_port(choices),
                                .alias = make_value(choices),
                                .location = make_value(choices),
                                .info = make_value(choices),
                                .password = make_value(choices),
                                .subcode = make_value(choices),
                                .email = make_value(choices)});
    return made;
}

std::vector<std::string> split_lines(const std::string& text)
{
    std::vector<std::string> lines{""};
    for (const char byte : text) {
        lines.back() += byte;
        if (byte == '\n')
            lines.emplace_back();
    }
    return lines;
}

/// Changes a line: its number, its element's name, its place, or that it is there once.
void change_line(case_choices& choices, std::vector<std::string>& lines)
{
    static const std::vector<std::string> others = {"<Server1>\n",
                                                    "</Server1>\n",
                                                    "<Server3x>",
                                                    "<Server12$ a>",
                                                    "<ServerX>",
                                                    "<Server>",
                                                    "<Server9/>",
                                                    "<!-- <Server7> -->",
                                                    "</clientconf>",
                                                    "<clientconf>",
                                                    "<ServerName>z</ServerName>",
                                                    "<NoUplinks>7<b>",
                                                    "<ReportPath>r/",
                                                    "<Unknown>1</Unknown>",
                                                    "\n",
                                                    ">",
                                                    "<"};
    std::string& line = lines[choices.number(lines.size() - 1)];
    const std::size_t one = line.find(">1<");
    switch (choices.number(4)) {
    case 0:
        if (one != std::string::npos)
            line.replace(one + 1, 1, make_number(choices));
        break;
    case 1:
        line = choices.pick(others);
        break;
    case 2:
        line += choices.pick(others);
        break;
    case 3:
        std::swap(line, lines[choices.number(lines.size() - 1)]);
        break;
    default:
        line += std::string{choices.pick(lines)};
    }
}

/// A file as the program writes it, with any values, and mostly with something changed by hand.
std::string make_file(case_choices& choices)
{
    std::vector<std::string> lines = split_lines(config_text(make_settings(choices)));
    for (std::size_t times = choices.number(4); times > 0; --times)
        change_line(choices, lines);
    std::string made;
    for (const std::string& line : lines)
        made += line;
    if (choices.chance(2))
        made[choices.number(made.size() - 1)] = '\0';
    return choices.chance(30) ? choices.damaged(made, spare_bytes) : made;
}

char* own_text(const std::optional<std::string>& text)
{
    return text ? str_dup(text->c_str()) : nullptr;
}

/// Gives a server to the program, as the directory and the user's answers do.
void add_to_state(const server_model& server)
{
    auto* entry = static_cast<server_entry*>(std::calloc(1, sizeof(server_entry)));
    entry->ServerName = own_text(server.name);
    entry->ServerPort = static_cast<std::int32_t>(server.port);
    entry->ServerAlias = own_text(server.alias);
    entry->Location = own_text(server.location);
    entry->Info = own_text(server.info);
    entry->Password = own_text(server.password);
    if (server_add(app_state.servers, entry) != -1) {
        server_entry_free(entry);
        return;
    }
    entry->SubCode = own_text(server.subcode);
    entry->UseEMail = own_text(server.email);
}

/// As before anything was loaded.
void forget_state()
{
    for (std::int32_t index = 0; index < app_state.servers->count; ++index) {
        std::free(server_at(app_state.servers, index)->UseEMail);
        std::free(server_at(app_state.servers, index)->SubCode);
    }
    collection_clear(app_state.servers);
    app_state.setting_flags = 0;
    for (std::size_t index = 0; index < setting_text_count; ++index) {
        std::free(app_state.setting_texts[index]);
        app_state.setting_texts[index] = nullptr;
    }
}

class config_model_comparison : private memory_folders, public config_test
{
protected:
    /// Drawing tens of thousands of notices would take as long as all the rest.
    config_model_comparison() : hidden_pane(std::exchange(app_state.status_pane, nullptr)) {}
    ~config_model_comparison() override
    {
        app_state.status_pane = hidden_pane;
    }
    config_model_comparison(const config_model_comparison&) = delete;
    config_model_comparison& operator=(const config_model_comparison&) = delete;

    void load_both(config_model& model, const std::string& file) const
    {
        load(file);
        config_model_load(model, file);
        EXPECT_TRUE(config_state_copy() == model) << "loaded from " << testing::PrintToString(file);
        for (std::size_t row = 0; row < checkbox_setting_count; ++row) {
            if (app_state.checkbox_rows[row] <= 0)
                continue;
            const chtype mark = mvwinch(app_state.settings_win, app_state.checkbox_rows[row], 3);
            const bool is_on = (model.flags & checkbox_setting_table[row].bit) != 0;
            EXPECT_EQ(mark & A_CHARTEXT, static_cast<chtype>(is_on ? 'X' : ' '))
                << checkbox_setting_table[row].label;
        }
    }
    /// The program keeps the document of a file that it replaces, so mostly there is none.
    std::string save_both(case_choices& choices, const config_model& model) const
    {
        if (choices.chance(95))
            unlink(home.path_of("ncursesclient.conf").c_str());
        save();
        std::string file = home.read_config().value_or("");
        EXPECT_EQ(file, config_text(config_model_saved(model)));
        return file;
    }

private:
    WINDOW* hidden_pane;
};

TEST_F(config_model_comparison, loads_any_file_and_saves_it_the_same)
{
    run_generated_cases(
        [this](case_choices& choices) {
            config_model model;
            const std::string file = make_file(choices);
            load_both(model, file);
            if (choices.chance(25))
                save_both(choices, model);
            forget_state();
        },
        generated_case_count / 2);
}

config_model make_state(case_choices& choices)
{
    const auto make_text = [&choices]() -> std::optional<std::string> {
        return choices.chance(30) ? std::nullopt : std::optional{make_value(choices)};
    };
    config_model made{.flags = static_cast<unsigned>(choices.number(255)),
                      .log_folder = make_text(),
                      .report_folder = make_text()};
    for (std::size_t count = choices.number(6); count > 0; --count)
        config_model_add(made, {.name = make_name(choices),
                                .port = choices.pick<long>({0, 1, 2202, 2203, 65'535, -1}),
                                .alias = make_text(),
                                .location = make_text(),
                                .info = make_text(),
                                .password = make_text(),
                                .subcode = make_text(),
                                .email = make_text()});
    return made;
}

TEST_F(config_model_comparison, saves_any_state_and_loads_it_the_same)
{
    run_generated_cases(
        [this](case_choices& choices) {
            const config_model known = make_state(choices);
            for (const server_model& server : known.servers)
                add_to_state(server);
            app_state.setting_flags = known.flags;
            app_state.setting_texts[LogFilePath] = own_text(known.log_folder);
            app_state.setting_texts[ReportPath] = own_text(known.report_folder);
            EXPECT_TRUE(config_state_copy() == known);
            const std::string file = save_both(choices, known);
            forget_state();
            config_model loaded;
            load_both(loaded, file);
            EXPECT_TRUE(loaded == config_model_reloaded(known)) << testing::PrintToString(file);
            forget_state();
        },
        generated_case_count / 2);
}

} // namespace
