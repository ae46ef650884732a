// config_load.hpp - reads the settings and the private server list from the configuration file.
#pragma once

/// Reads the file (config_file.hpp) into setting_flags, setting_texts and the server collection,
/// draws switches and folders on the settings page, and reports in the status pane. Loading
/// switches settings on and never off; servers that are already known are kept. A missing file
/// leaves everything as it was; a file over config_max_bytes is refused, and one that cannot be
/// read whole counts as empty. Sets app_state.is_config_unread.
void config_load();
