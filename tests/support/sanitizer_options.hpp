// sanitizer_options.hpp - options of the sanitizers in a program under test, and their reports.
#pragma once

#include <map>
#include <string>

/// The exit status of a program in which a sanitizer found something.
constexpr int sanitizer_exit_status = 99;

/// Environment variables for a program under test: a finding ends it with sanitizer_exit_status,
/// and libraries may be preloaded beside the address sanitizer. Options in the caller's own
/// environment take precedence.
std::map<std::string, std::string> sanitizer_environment();

/// True if `error_text`, a program's standard error, holds a report of any sanitizer.
bool has_sanitizer_report(const std::string& error_text);
