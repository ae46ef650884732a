// server_info.hpp - the window about the selected server.
#pragma once

/// Opens the window for the selected server, or closes it together with dialog_win if a popup is
/// open. It is drawn once. Without a selection nothing happens.
void server_info_toggle();
