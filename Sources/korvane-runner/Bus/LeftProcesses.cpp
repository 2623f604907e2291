#include "korvane-runner/Bus/LeftProcesses.h"

namespace korvane::runner::bus {

LeftProcesses LeftProcesses::among(std::span<const ChildProcessKind> children, bool hadWindows) {
    using Kin = ChildProcessKind::Kin;
    LeftProcesses left{.areUnseen = children.empty()};
    for (const auto& child : children) {
        switch (child.kin) {
        case Kin::program:
        case Kin::service:
        case Kin::otherInstance:
            break;
        case Kin::ofService:
            (hadWindows ? left.programs : left.services).push_back(child.process);
            break;
        case Kin::unknown:
            left.programs.push_back(child.process);
            break;
        }
    }
    return left;
}

} // namespace korvane::runner::bus
