#include "korvane-runner/Hosts.h"

namespace korvane::runner {

Host hostFor(const ambrel::InstanceConfig& config) noexcept {
    if (config.kind == ambrel::ShortcutKind::web) return Host::web;
    return config.menuBarIcon ? Host::menuBar : Host::waiting;
}

} // namespace korvane::runner
