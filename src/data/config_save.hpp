// config_save.hpp - writes the settings and the private server list to the configuration file.
#pragma once

/// Replaces the file (config_file.hpp). Whatever happens on the way, it holds either all of its
/// former content or all of the new. Values have blanks for "<" and ">". A link is followed and the
/// mode is kept, but only the owner may read a new file, or one with passwords in it. Leaves the
/// file alone, without a message, if it cannot be written, was not read at the start, or would be
/// refused at the next start. Leaves the working directory at HOME.
void config_save();
