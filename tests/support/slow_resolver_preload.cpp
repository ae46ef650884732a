// slow_resolver_preload.cpp - resolves names when a test says so; loaded into the program with
// LD_PRELOAD.
//
// A look-up creates the file "asked" in the folder that SLOW_RESOLVER_FOLDER names, and waits for
// the file "answer" there. Its text is the address; if it is empty, the name does not exist.
// Numeric addresses are resolved at once. Without the variable nothing changes.
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

open_file open_in(const std::string& folder, const char* name, const char* mode)
{
    return open_file{std::fopen((folder + "/" + name).c_str(), mode)};
}

std::string read_answer(const std::string& folder)
{
    open_in(folder, "asked", "we");
    open_file answer;
    while (!(answer = open_in(folder, "answer", "re"))) {
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
    const std::string address = read_answer(folder);
    return address.empty() ? EAI_NONAME : next(address.c_str(), service, hints, list);
}
