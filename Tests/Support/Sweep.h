#pragma once

#include "Support/Expect.h"
#include "Support/Faults.h"
#include "Support/Files.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <set>
#include <string>
#include <vector>

/// Running an action again and again, each time with another system call failing.
namespace korvane::test {

inline const std::vector<faults::Failure> failures{
    {EIO, false}, {EACCES, false}, {ENOSPC, false}, {EIO, true}};

inline std::size_t openDescriptors() { return namesIn("/proc/self/fd").size(); }

/// Runs `act` on a new `Scene` again and again, with another call failing each time, until a run
/// has made too few calls for one to fail; `check` looks at what is left after each.
template <class Scene>
void sweep(const std::function<void(Scene&)>& act,
           const std::function<void(Scene&, const faults::Failure&)>& check) {
    for (const auto& failure : failures) {
        long failing = 1;
        for (bool failed = true; failed; ++failing) {
            Scene scene;
            const auto descriptors = openDescriptors();
            faults::arm(failing, failure);
            act(scene);
            const faults::Outcome outcome = faults::disarm();
            CAPTURE(failure.code);
            CAPTURE(failure.lasting);
            CAPTURE(failing);
            CAPTURE(outcome.failedCall);
            CHECK(openDescriptors() == descriptors);
            check(scene, failure);
            failed = !outcome.failedCall.empty();
        }
        CHECK(failing > 5); // the wrapped calls are the ones that the library makes
    }
}

/// The user's files below the folders; each must be there at least once.
inline void checkNothingLost(const std::multiset<std::string>& before,
                             const std::vector<Path>& folders) {
    const auto after = contentsBelow(folders);
    for (const auto& content : before) {
        if (after.count(content) == 0) {
            CAPTURE(content.substr(0, 60));
            CHECK(after.count(content) >= 1);
        }
    }
}

inline void checkOnlyNames(const Path& folder, const Strings& allowed) {
    if (!isRealFolder(folder)) return;
    for (const auto& name : namesIn(folder)) {
        if (std::find(allowed.begin(), allowed.end(), name) == allowed.end()) {
            CAPTURE(folder);
            CHECK(name == "an expected name");
        }
    }
}

} // namespace korvane::test
