// sanitizer_options.hpp - how the sanitizers in a program under test behave, and their findings.
#pragma once

#include <map>
#include <string>

/// The status with which a program ends after a sanitizer found something.
constexpr int sanitizer_exit_status = 99;

/// Environment variables for a program under test: findings end it with sanitizer_exit_status,
/// libraries may be preloaded beside the address sanitizer. Options of the caller's own
/// environment are kept and win.
std::map<std::string, std::string> sanitizer_environment();

/// True if `error_text`, a program's standard error, holds a report of any sanitizer.
bool has_sanitizer_report(const std::string& error_text);
