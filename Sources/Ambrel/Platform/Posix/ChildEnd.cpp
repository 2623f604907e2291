#include "Ambrel/Platform/ChildEnd.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/PollUntil.h"

namespace ambrel {

ChildEnd::ChildEnd(const HostedProgram& child) : fd_(child.openEnd()) {
    if (!fd_) throwFileError("watch", "process " + std::to_string(child.processIdentifier()));
}

bool ChildEnd::wait(std::chrono::milliseconds limit) const {
    pollfd source{fd_.get(), POLLIN, 0};
    return pollUntil(&source, 1, std::chrono::steady_clock::now() + limit) > 0;
}

} // namespace ambrel
