// csv_reader.hpp - records out of a file of values that are separated by commas (RFC 4180).
//
// Owns the quotes and the line ends; gives the values no meaning.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

namespace tovrik
{

/// One record, or what is wrong with it.
struct csv_record {
    std::vector<std::string> fields = {}; ///< at least one; as they were written
    unsigned line = 0;                    ///< where it begins, from 1
    std::string error = {};               ///< empty: the record is good
};

/// Reads one record after another. Lines end with a line feed or with both signs; empty ones are
/// left out, and so is a byte order mark at the beginning. After a broken record, reading goes on
/// with the next line.
class csv_reader
{
public:
    /// `stream` is read from its position on, and must live as long. A record of more than
    /// `most_bytes` is broken.
    csv_reader(std::FILE* stream, std::size_t most_bytes);

    /// Reads the next record into `record`. False at the end of the file.
    bool next(csv_record& record);

private:
    int read_sign();
    int look_ahead();
    void skip_line(int sign);
    int read_quoted(csv_record& record);
    int read_plain(csv_record& record, int sign);
    bool is_full(csv_record& record);

    std::FILE* from;
    std::size_t limit;
    std::size_t taken = 0; // bytes of the record so far
    unsigned line = 1;
};

} // namespace tovrik
