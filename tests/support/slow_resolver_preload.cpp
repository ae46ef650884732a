// slow_resolver_preload.cpp - names that are found when a test says so, loaded into the program
// with LD_PRELOAD.
//
// Looking a name up first makes the file "asked" in the folder that SLOW_RESOLVER_FOLDER names, and
// then waits for the file "answer" there: its text is the address, without one the name does not
// exist. Numeric addresses are none of its business. Without the variable nothing changes.
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <memory>
#include <netdb.h>
#include <string>

namespace
{

constexpr long round_ns = 5'000'000;

struct file_closer {
    void operator()(std::FILE* file) const
    {
        std::fclose(file);
    }
};
using open_file = std::unique_ptr<std::FILE, file_closer>;

open_file file_in(const std::string& folder, const char* name, const char* mode)
{
    return open_file{std::fopen((folder + "/" + name).c_str(), mode)};
}

std::string answer_of(const std::string& folder)
{
    file_in(folder, "asked", "we");
    open_file answer;
    while (!(answer = file_in(folder, "answer", "re"))) {
        const timespec round = {0, round_ns};
        nanosleep(&round, nullptr);
    }
    char line[64] = {};
    return std::fgets(line, sizeof line, answer.get()) != nullptr ? line : "";
}

} // namespace

extern "C" int getaddrinfo(const char* host, const char* service, const addrinfo* hints,
                           addrinfo** list)
{
    using resolver = int (*)(const char*, const char*, const addrinfo*, addrinfo**);
    const auto next = reinterpret_cast<resolver>(dlsym(RTLD_NEXT, "getaddrinfo"));
    const char* folder = std::getenv("SLOW_RESOLVER_FOLDER");
    const bool is_numeric = hints != nullptr && (hints->ai_flags & AI_NUMERICHOST) != 0;
    if (next == nullptr)
        return EAI_SYSTEM;
    if (folder == nullptr || is_numeric)
        return next(host, service, hints, list);
    const std::string address = answer_of(folder);
    return address.empty() ? EAI_NONAME : next(address.c_str(), service, hints, list);
}
