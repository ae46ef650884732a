// template_model.hpp - filling a template: a model written from its rules.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

// The bounds of a template, after which every "%" that is left becomes "#".
constexpr int template_model_replacements = 500;
constexpr std::size_t template_model_bytes = 65'536;
constexpr std::size_t template_model_visited_nodes = 131'072;
constexpr std::size_t template_model_bytes_of_a_visit = 64;
constexpr std::size_t template_model_searched_bytes = 2'097'152;

/// Fills a template. nodes: how many the document has. value_at: the value at a path, empty if
/// there is none.
std::string template_model_fill(std::string text, std::size_t nodes,
                                const std::function<std::string(const std::string&)>& value_at);
