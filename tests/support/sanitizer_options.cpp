// sanitizer_options.cpp - options of the sanitizers in a program under test, and their reports.
#include "support/sanitizer_options.hpp"

#include <cstdlib>

namespace
{

std::string add_callers_options(const char* name, std::string options)
{
    const char* own = std::getenv(name);
    if (own != nullptr && *own != '\0')
        options.append(":").append(own);
    return options;
}

} // namespace

std::map<std::string, std::string> sanitizer_environment()
{
    const std::string status = "exitcode=" + std::to_string(sanitizer_exit_status);
    const std::pair<const char*, std::string> ours[] = {
        {"ASAN_OPTIONS", status + ":verify_asan_link_order=0:detect_stack_use_after_return=1"},
        {"LSAN_OPTIONS", status + ":print_suppressions=0:suppressions=" LSAN_SUPPRESSIONS},
        // Handlers run only inside pauses, where allocating is safe.
        {"TSAN_OPTIONS", status + ":report_signal_unsafe=0"},
        {"UBSAN_OPTIONS", status + ":print_stacktrace=1"},
    };
    std::map<std::string, std::string> environment;
    for (const auto& [name, options] : ours)
        environment[name] = add_callers_options(name, options);
    return environment;
}

bool has_sanitizer_report(const std::string& error_text)
{
    for (const char* sign : {"AddressSanitizer", "LeakSanitizer", "ThreadSanitizer",
                             "UndefinedBehaviorSanitizer", "runtime error:"})
        if (error_text.find(sign) != std::string::npos)
            return true;
    return false;
}
