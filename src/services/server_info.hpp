// server_info.hpp - the window that tells what is known of the selected server.
#pragma once

/// Opens the window for the selected server, or closes it together with dialog_win when a popup is
/// open. Drawn once; without a selection nothing happens.
void server_info_toggle();
