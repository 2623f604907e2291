#include "korvane-runner/Bus/Linux/DescriptorLimit.h"

namespace korvane::runner::bus {

DescriptorLimit::DescriptorLimit() noexcept : isKnown_(::getrlimit(RLIMIT_NOFILE, &before_) == 0) {}

void DescriptorLimit::raise() const noexcept {
    if (!isKnown_) return;
    const rlimit raised{before_.rlim_max, before_.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &raised);
}

void DescriptorLimit::lower() const noexcept {
    if (isKnown_) ::setrlimit(RLIMIT_NOFILE, &before_);
}

} // namespace korvane::runner::bus
