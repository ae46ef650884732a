// ascii_form.cpp - see ascii_form.hpp.
#include "server/tovrikd/ascii_form.hpp"

#include <charconv>

namespace tovrik
{
namespace
{

constexpr std::string_view digits = "0123456789ABCDEF";

/// A mark's first letter and its last occur nowhere else in it, nor among the digits, so that it is
/// found where it was written and nowhere else.
std::string choose_mark(std::string_view text)
{
    std::string mark;
    unsigned number = 0;
    do {
        mark = 'x' + std::to_string(number++) + 'y';
    } while (text.find(mark) != std::string_view::npos);
    return mark;
}

} // namespace

ascii_form ascii_form_make(std::string_view original)
{
    ascii_form form;
    form.mark = choose_mark(original);
    for (const char c : original) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            form.text += c;
        } else {
            form.text += form.mark;
            form.text += digits[byte >> 4];
            form.text += digits[byte & 0xFU];
        }
    }
    return form;
}

std::string ascii_form_original(const ascii_form& form, std::string_view piece)
{
    std::string original;
    for (;;) {
        const std::size_t found = piece.find(form.mark);
        original += piece.substr(0, found);
        if (found == std::string_view::npos)
            return original;
        piece.remove_prefix(found + form.mark.size());
        unsigned char byte = 0;
        const char* const end = piece.data() + std::min<std::size_t>(piece.size(), 2);
        if (std::from_chars(piece.data(), end, byte, 16).ptr == piece.data() + 2) {
            original += static_cast<char>(byte);
            piece.remove_prefix(2);
        } else {
            original += form.mark;
        }
    }
}

} // namespace tovrik
