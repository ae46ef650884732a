// text.hpp - the string routines that the whole program shares.
//
// All texts are NUL-terminated bytes without any notion of an encoding. Heap texts are malloc'ed;
// str_append and str_replace may move theirs, so callers go on with the returned pointer.
#pragma once

#include <cstddef>

/// A new copy of `text`, owned by the caller. Null for null, and when the allocation fails.
char* str_dup(const char* text);

/// Appends `added` to the heap text `text`; null counts as the empty text for both.
/// The text, which may have moved; if nothing is to be added or the allocation fails, `text`
/// itself, unchanged. `added` must not lie within `text`.
char* str_append(char* text, const char* added);

/// Replaces every `pattern` (never null) in the heap text `text` (may be null) by `replacement`
/// (null: by nothing), left to right, without overlap and without looking into what was inserted.
/// The text, which may have moved; if there is nothing to replace or the allocation fails,
/// `text` itself, unchanged. An empty pattern matches nothing. Neither `pattern` nor
/// `replacement` may lie within `text`.
char* str_replace(char* text, const char* pattern, const char* replacement);

/// Splits `text` in place: puts the start of each field into `fields`, of which there are
/// `field_slots`, and ends each by a NUL. Slots beyond the last field are left untouched.
/// The number of fields that `text` holds; those beyond the slots are counted too, but not cut off:
/// the last stored field then runs to the end of the text. An empty text has no fields.
/// `separators` (never null) also chooses how runs are read:
///   one character: each one ends a field, so two in a row enclose an empty field;
///   several:       any of them ends a field, and a run of them counts as one;
///   none:          blanks and tabs, runs count as one, and those at either end count for nothing.
int str_split(char* text, char** fields, int field_slots, const char* separators);

/// Cuts off one "/" at the end of `text` (never null), if there is one. Returns `text`.
char* strip_trailing_slash(char* text);
