// log_record.hpp - appends records to open logs, each whole or not at all.
#pragma once

#include <cstdint>
#include <string_view>
#include <sys/types.h>

/// A part of a record that is in a log and could not be removed yet. Zeroed: there is none.
struct torn_record {
    off_t begin;         // where in the log it begins
    std::uint32_t bytes; // its length
};

/// What is remembered of a log between two records. Zeroed at first.
struct log_condition {
    char* name;       // the name it was opened under; owned, malloc'ed
    torn_record torn; // at its end
    bool is_failing;  // a failure was reported, and it has taken no record since
    bool is_lost;     // it was deleted while open and must be opened again
};

/// Appends a record to a log, at once. log: a descriptor opened for appending. If only a part of
/// the record fits, that part is removed again; while that is impossible, `torn` remembers it and
/// nothing is appended after it. This works for files only: what a pipe or a terminal has taken is
/// gone. False if the record is not in the log.
bool record_append(int log, std::string_view record, torn_record& torn);

/// Removes a torn record, unless others have cut the log or written after it. False if it is still
/// there. Without a torn record nothing happens.
bool undo_torn_record(int log, torn_record& torn);

/// Whether a log is a file that was deleted, so that nobody will ever read it.
bool is_deleted(int log);
