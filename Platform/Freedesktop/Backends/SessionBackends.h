#pragma once

#include "Platform/Freedesktop/Backends/SessionDisplay.h"

#include <QDBusConnection>

#include <string>
#include <vector>

namespace velloren {

/// The services that a free desktop gives this process, provided for as long as this lives: workspace, window
/// server, global events and status bar. Main thread only.
class SessionBackends final {
  public:
    struct Identity {
        std::string identifier; ///< the bundle's, which hosts know the status item by
        std::string title;
        std::vector<std::string> followed; ///< the bundles whose launches and ends are told
    };

    SessionBackends(SessionDisplay display, const QDBusConnection& bus, const Identity& identity);
    SessionBackends(const SessionBackends&) = delete;
    SessionBackends& operator=(const SessionBackends&) = delete;
    ~SessionBackends();
};

} // namespace velloren
