// service_manager.hpp - tells systemd how far the server is, if systemd has started it.
#pragma once

namespace tovrik
{

/// The server answers clients; after a reload, with the configuration that it now has.
void service_manager_tell_ready();

/// It reads its configuration again.
void service_manager_tell_reloading();

/// It says good-bye to its clients.
void service_manager_tell_stopping();

} // namespace tovrik
