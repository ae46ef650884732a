// template_model.hpp - filling a template: a model written from its rules.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

// The bounds of a template, after which every "%" that is left becomes "#".
constexpr int template_model_replacements = 500;
constexpr std::size_t template_model_bytes = 65'536;

/// Fills a template. value_at: the value at a path, empty if there is none.
std::string template_model_fill(std::string text,
                                const std::function<std::string(const std::string&)>& value_at);
