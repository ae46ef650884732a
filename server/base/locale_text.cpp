// locale_text.cpp - see locale_text.hpp.
#include "server/base/locale_text.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iconv.h>
#include <langinfo.h>

namespace tovrik
{
namespace
{

/// Closes a conversion at the end of its scope.
struct open_conversion {
    iconv_t handle;
    explicit open_conversion(const char* from) : handle(iconv_open("ISO-8859-1", from)) {}
    ~open_conversion()
    {
        if (is_open())
            iconv_close(handle);
    }
    open_conversion(const open_conversion&) = delete;
    open_conversion& operator=(const open_conversion&) = delete;
    bool is_open() const
    {
        return reinterpret_cast<std::intptr_t>(handle) != -1;
    }
};

} // namespace

std::optional<std::string> locale_to_latin1(const std::string& text)
{
    // Needs no tables of the system, which a small one may lack.
    if (std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; }))
        return text;
    const open_conversion conversion{nl_langinfo(CODESET)};
    if (!conversion.is_open())
        return std::nullopt;
    std::string from = text;
    std::string converted(text.size() + 1, '\0'); // no character becomes longer
    char* in = from.data();
    char* out = converted.data();
    std::size_t in_left = from.size();
    std::size_t out_left = converted.size();
    // A character that would only be approximated counts as one that cannot be converted.
    if (iconv(conversion.handle, &in, &in_left, &out, &out_left) != 0)
        return std::nullopt;
    converted.resize(converted.size() - out_left);
    return converted;
}

} // namespace tovrik
