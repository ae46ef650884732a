// typed_password.cpp - see typed_password.hpp.
#include "server/tovrikd/typed_password.hpp"

#include "server/base/limits.hpp"
#include "server/base/text_fields.hpp"
#include "server/tovrikd/configuration_limits.hpp"

#include <algorithm>
#include <iconv.h>
#include <langinfo.h>
#include <memory>
#include <optional>
#include <type_traits>

namespace tovrik
{
namespace
{

struct converter_end {
    void operator()(iconv_t converter) const
    {
        iconv_close(converter);
    }
};

// iconv_t is a pointer here, and the value for failure is not null.
using unique_converter = std::unique_ptr<std::remove_pointer_t<iconv_t>, converter_end>;

/// The same text in ISO-8859-1; none if a character has no place there, or a byte none in the set.
std::optional<std::string> encode_text(std::string text, const char* charset)
{
    const iconv_t opened = iconv_open("ISO-8859-1", charset);
    if (reinterpret_cast<std::intptr_t>(opened) == -1) // NOLINT(performance-no-int-to-ptr)
        return std::nullopt;
    const unique_converter converter{opened};
    std::string latin1(text.size(), '\0');
    char* from = text.data();
    std::size_t from_left = text.size();
    char* to = latin1.data();
    std::size_t to_left = latin1.size();
    // A count above 0 is that of characters that were replaced by others.
    if (iconv(converter.get(), &from, &from_left, &to, &to_left) != 0 || from_left != 0)
        return std::nullopt;
    latin1.resize(latin1.size() - to_left);
    return latin1;
}

bool is_typeable(const std::string& latin1)
{
    return std::ranges::none_of(latin1,
                                [](char c) { return is_control(static_cast<unsigned char>(c)); });
}

} // namespace

typed_password typed_password_of(const std::string& typed)
{
    if (typed.empty())
        return {.error = "a password cannot be empty"};
    auto bytes = encode_text(typed, nl_langinfo(CODESET));
    if (!bytes || !is_typeable(*bytes))
        return {.error = "it has a character that cannot be typed into the client"};
    if (bytes->size() > max_password_bytes)
        return {.error = "the client takes at most " + std::to_string(max_password_bytes) +
                         " characters"};
    return {.bytes = std::move(*bytes)};
}

} // namespace tovrik
