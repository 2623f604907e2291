#pragma once

#include "Ambrel/Platform/Processes.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace ambrel {

/// Who started whom, as far as that can still be seen.
class ProcessDescent {
public:
    /// `processes` are by id, as runningProcesses() tells them.
    explicit ProcessDescent(std::vector<ProcessSeen> processes)
        : processes_(std::move(processes)) {}

    const std::vector<ProcessSeen>& processes() const { return processes_; }

    /// Null where there is none of that id.
    const ProcessSeen* find(int id) const {
        const auto found = std::ranges::lower_bound(processes_, id, {}, &ProcessSeen::id);
        return found != processes_.end() && found->id == id ? &*found : nullptr;
    }

    /// The nearest of `process`, which is one of them, and those above it that `isWanted`; null
    /// where there is none.
    template <class Wanted>
    const ProcessSeen* nearest(const ProcessSeen& process, const Wanted& isWanted) const {
        // The list was not made at one moment: an id given anew may lead round in a circle.
        std::set<int> passed;
        for (const auto* at = &process; at != nullptr && passed.insert(at->id).second;
             at = find(at->parent)) {
            if (isWanted(*at)) return at;
        }
        return nullptr;
    }

private:
    std::vector<ProcessSeen> processes_;
};

} // namespace ambrel
