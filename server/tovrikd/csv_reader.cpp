// csv_reader.cpp - see csv_reader.hpp.
#include "server/tovrikd/csv_reader.hpp"

namespace tovrik
{
namespace
{

bool is_line_end(int sign)
{
    return sign == '\n' || sign == EOF;
}

} // namespace

csv_reader::csv_reader(std::FILE* stream, std::size_t most_bytes) : from(stream), limit(most_bytes)
{
    for (const int mark : {0xEF, 0xBB, 0xBF}) {
        if (look_ahead() != mark)
            break;
        getc_unlocked(from);
    }
}

/// The next byte or EOF. The two signs of a line end are one line feed.
int csv_reader::read_sign()
{
    int sign = getc_unlocked(from);
    if (sign == '\r' && look_ahead() == '\n')
        sign = getc_unlocked(from);
    ++taken;
    if (sign == '\n')
        ++line;
    return sign;
}

int csv_reader::look_ahead()
{
    return std::ungetc(getc_unlocked(from), from);
}

/// Reads the rest of a line of which `sign` was the last byte read.
void csv_reader::skip_line(int sign)
{
    while (!is_line_end(sign))
        sign = read_sign();
}

bool csv_reader::is_full(csv_record& record)
{
    if (taken <= limit)
        return false;
    record.error = "this record is longer than " + std::to_string(limit) + " bytes";
    return true;
}

/// Reads a field after its first quote. The sign after the field.
int csv_reader::read_quoted(csv_record& record)
{
    for (int sign = read_sign(); !is_full(record); sign = read_sign()) {
        if (sign == '"') {
            sign = read_sign();
            if (sign != '"') {
                if (sign != ',' && !is_line_end(sign))
                    record.error = "there is text after the end of a quote";
                return sign;
            }
        } else if (sign == EOF) {
            record.error = "a quote begins here or below and does not end";
            return sign;
        }
        record.fields.back() += static_cast<char>(sign);
    }
    return ' ';
}

/// Reads a field without quotes that begins with `sign`. The sign after the field.
int csv_reader::read_plain(csv_record& record, int sign)
{
    for (; sign != ',' && !is_line_end(sign) && !is_full(record); sign = read_sign()) {
        if (sign == '"')
            record.error = "there is a quote within a field that does not begin with one";
        record.fields.back() += static_cast<char>(sign);
    }
    return sign;
}

bool csv_reader::next(csv_record& record)
{
    record = {};
    int sign = '\n';
    while (sign == '\n') {
        record.line = line;
        taken = 0;
        sign = read_sign();
    }
    if (sign == EOF)
        return false;
    for (;;) {
        record.fields.emplace_back();
        sign = sign == '"' ? read_quoted(record) : read_plain(record, sign);
        if (sign != ',' || !record.error.empty())
            break;
        sign = read_sign();
    }
    skip_line(sign);
    return true;
}

} // namespace tovrik
