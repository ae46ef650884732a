// template_target.cpp - filling a template beside its model.
#include "base/limits.hpp"
#include "data/template.hpp"
#include "data/text.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"
#include "models/template_model.hpp"
#include "models/xml_compare.hpp"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz_input input{data, size};
    const std::string text = input.text();
    const xml_document document{xml_parse(input.text().c_str())};
    const heap_text made{fill_template(str_dup(text.c_str()), document.get())};
    require(made != nullptr, "a template gives a text");
    const std::string result = made.get();
    require(result.find('%') == std::string::npos, "no placeholder is left");
    require(result.size() <= std::max(text.size(), template_max_bytes), "the bound holds");
    const auto value_at = [&document](const std::string& path) -> std::string {
        const char* value = xml_get(document.get(), path.c_str(), false, false);
        return value != nullptr ? value : "";
    };
    const std::size_t nodes = xml_model_copy(document.get()).size();
    require(result == template_model_fill(text, nodes, value_at),
            "every placeholder has its value");
    return 0;
}
