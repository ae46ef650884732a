// xml_target.cpp - the XML reader and its look-ups beside their model.
#include "fuzz/fuzz_input.hpp"
#include "fuzz/property.hpp"
#include "models/xml_compare.hpp"

#include <cerrno>

namespace
{

constexpr std::size_t max_keys = 8;

void look_up(const xml_node* document, const xml_index& index, const xml_model& expected,
             const std::string& key)
{
    const char* broken = xml_look_up_broken(document, index, expected, key);
    require(broken == nullptr, broken);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz_input input{data, size};
    const std::string text = input.text();
    errno = 0;
    const xml_document document{xml_parse(text.c_str())};
    const xml_model expected = xml_model_beside(document.get(), errno == ENOMEM, text);
    require(xml_model_copy(document.get()) == expected, "all elements are as in the model");
    const xml_index index = xml_index_build(document.get());
    for (std::size_t count = 0; count < max_keys && !input.is_empty(); ++count)
        look_up(document.get(), index, expected, input.text());
    for (std::size_t place = 0; place < expected.size() && place < max_keys; ++place) {
        look_up(document.get(), index, expected, expected[place].path.value_or(""));
        look_up(document.get(), index, expected, expected[place].name.value_or(""));
    }
    return 0;
}
