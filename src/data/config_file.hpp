// config_file.hpp - reads and writes "ncursesclient.conf": the settings and the private server
// list.
//
// The file lies in the home folder, or in the current folder while HOME is not set. It is small XML
// in ISO-8859-1; values stand in it as they are, without escapes.
#pragma once

/// The configuration file's name within the home folder.
constexpr const char* config_name = "ncursesclient.conf";

/// Reads the file into setting_flags, setting_texts and the server collection, draws the switches'
/// marks and the folders on the settings page, and reports in the status pane. Switches are only
/// ever set, servers already known are kept. A missing file leaves everything as it was; one over
/// config_max_bytes is refused, and one that cannot be read whole has nothing in it.
void config_load();

/// Writes settings and servers to the file. Whatever happens on the way, the file holds either all
/// of its former content or all of the new. A link is followed, the mode is kept, a new file is for
/// its owner only. Says nothing when it cannot be written, or was not read, or would be refused by
/// the next start, and leaves it as it is. Leaves the working directory at HOME.
void config_save();
