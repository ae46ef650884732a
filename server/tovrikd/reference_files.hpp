// reference_files.hpp - the database that the owner of the server keeps in files.
//
// Files of values separated by commas, in UTF-8 or ISO-8859-1: airlines and airports of a code and
// a name, aircraft of the nine fields of an update. A first line may name the columns; then they
// may come in any order, and others beside them.
#pragma once

#include "server/storage/reference_data.hpp"
#include "server/tovrikd/configuration.hpp"

#include <cstdio>
#include <string>
#include <vector>

namespace tovrik
{

/// What the files hold. A row that is wrong is left out, and told.
struct reference_files_result {
    reference_data entries;
    std::vector<std::string> complaints; ///< "FILE:LINE: what", up to a bound for each file
};

/// Reads the files that are named. Half a million aircraft take more than a second of the processor
/// and 230 MB. Texts longer than max_field_bytes are cut; of two rows with the same first field the
/// later counts. Uses nothing that is shared, so it may run in a thread of its own.
reference_files_result reference_files_read(const reference_configuration& files);

/// Reads one file of entries of a kind (kind::add_airline, add_aircraft or add_airport) from an
/// open stream, which `path` names in complaints.
void reference_file_read(std::FILE* stream, const std::string& path, std::uint32_t kind,
                         reference_files_result& to);

} // namespace tovrik
