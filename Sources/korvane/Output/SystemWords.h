#pragma once

namespace korvane {

/// What the parts of a desktop are called on this system, as ends of sentences. Each system has its
/// own file of them.
struct SystemWords {
    const char* inDock;       ///< where running applications are listed
    const char* inStatusArea; ///< where small items of running programs stand
};

extern const SystemWords systemWords;

} // namespace korvane
