// log_record.hpp - appends records to open logs, each whole or not at all.
#pragma once

#include <cstdint>
#include <string_view>
#include <sys/types.h>

/// A part of a record that a log holds and that could not be taken back yet. Zeroed: there is none.
struct torn_record {
    off_t begin;         // where in the log it begins
    std::uint32_t bytes; // how long the part is
};

/// What is remembered of a log between two records. Zeroed at first.
struct log_condition {
    char* name;       // what it was opened as; owned, malloc'ed
    torn_record torn; // at its end
    bool is_failing;  // it has taken no record since that was reported
    bool is_lost;     // it was deleted while open, and is to be opened anew
};

/// Appends a record to a log, at once. log: a descriptor opened for appending. A record of which
/// only a part fits, or was written when an error came, is taken back: `torn` remembers it while
/// that is impossible, and nothing is appended behind it. Files only: what a pipe or a terminal has
/// taken is gone. False when the record is not in the log.
bool record_append(int log, std::string_view record, torn_record& torn);

/// Removes a torn record, unless others have cut the log or written behind it meanwhile. False when
/// it is still there. Nothing happens while there is none.
bool record_take_back(int log, torn_record& torn);

/// Whether a log is a file that no folder holds any more, so that nobody will ever read it.
bool is_deleted(int log);
