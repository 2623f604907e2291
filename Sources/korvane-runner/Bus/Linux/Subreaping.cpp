#include "korvane-runner/Bus/Linux/Subreaping.h"

#include <sys/prctl.h>
#include <utility>

namespace korvane::runner::bus {

namespace {

void setSubreaper(unsigned long isOne) noexcept {
    ::prctl(PR_SET_CHILD_SUBREAPER, isOne, 0UL, 0UL, 0UL);
}

/// A program that becomes another one remains what it was.
bool isSubreaper() noexcept {
    int isOne = 0;
    return ::prctl(PR_GET_CHILD_SUBREAPER, &isOne, 0UL, 0UL, 0UL) == 0 && isOne != 0;
}

} // namespace

Subreaping::Subreaping() noexcept : isToEnd_(!isSubreaper()) { setSubreaper(1); }

Subreaping::Subreaping(Subreaping&& other) noexcept
    : isToEnd_(std::exchange(other.isToEnd_, false)) {}

Subreaping::~Subreaping() {
    if (isToEnd_) setSubreaper(0);
}

} // namespace korvane::runner::bus
