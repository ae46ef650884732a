// config_target.cpp - any file is loaded, saved, and loaded again. What is saved and what comes
// back is the same as with the model.
#include "bench/null_screen.hpp"
#include "data/config_file.hpp"
#include "data/config_load.hpp"
#include "data/config_save.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/fuzz_screen.hpp"
#include "fuzz/fuzz_session.hpp"
#include "fuzz/property.hpp"
#include "models/config_state.hpp"
#include "net/directory_lines.hpp"

#include <sys/stat.h>
#include <unistd.h>

namespace
{

void write_file(const std::string& text)
{
    // The working folder is the home folder, and open() for writing is replaced here.
    const unique_file file{std::fopen(config_name, "w")};
    require(file != nullptr, "there is room for a file");
    std::fwrite(text.data(), 1, text.size(), file.get());
}

std::string read_file()
{
    const unique_file file{std::fopen(config_name, "r")};
    struct stat status = {};
    require(file != nullptr && fstat(fileno(file.get()), &status) == 0,
            "there is a file after saving");
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file.get()));
    return text;
}

void forget_state()
{
    configuration_forget();
    app_state.selected = -1;
}

/// Saves into a folder without the old file, whose document would stay in memory.
std::string save()
{
    unlink(config_name);
    config_save();
    return read_file();
}

/// Saves what the program knows, forgets it and loads it again. Returns the file.
std::string check_saving()
{
    const config_model known = config_state_copy();
    const std::string file = save();
    require(file == config_text(config_model_saved(known)), "what is saved is what was known");
    forget_state();
    config_load();
    servers_check();
    require(config_state_copy() == config_model_reloaded(known), "what was saved comes back");
    return file;
}

void check_round_trip(const std::string& text)
{
    write_file(text);
    config_load();
    servers_check();
    check_saving();
    const std::string second = check_saving();
    require(save() == second, "from then on nothing changes");
}

/// Whatever a directory sends and a user types, every server and setting comes back as its own.
void check_foreign_texts(fuzz_input& input)
{
    app_state.setting_flags = input.number(255);
    app_state.setting_texts[ReportPath] = owned_or_none(input.text());
    while (!input.is_empty() && app_state.servers->count < 20) {
        std::string line = input.text();
        server_entry* entry = directory_entry_new(line.data());
        if (entry != nullptr && server_add(app_state.servers, entry) != -1)
            server_entry_free(entry);
    }
    check_saving();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const screen_visit visit;
    fuzz_input input{data, size};
    if (input.number(7) == 0)
        check_foreign_texts(input);
    else
        check_round_trip(input.text());
    return 0;
}
