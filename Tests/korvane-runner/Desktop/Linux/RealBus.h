#pragma once

#include "Support/Programs.h"
#include "Support/TempDir.h"

#include <memory>
#include <string>

namespace korvane::test {

/// dbus-daemon in a folder of its own, with the limits of a user's session. It starts no services.
class RealBus {
public:
    /// Returns when it can be connected to.
    RealBus();

    void end() { daemon_.reset(); }
    /// Once more, at the same address.
    void start();

    Path socket() const { return tmp_ / "bus"; }

private:
    TempDir tmp_;
    std::unique_ptr<RunningProgram> daemon_;
};

} // namespace korvane::test
