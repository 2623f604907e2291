#pragma once

#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/SystemTools.h"

#include <string>
#include <vector>

namespace korvane::runner {

/// Hands addresses to the programs of the user's desktop, which know nothing of the instance: they
/// get the environment from before the home moved, and live on when the instance ends.
class LinkOpener {
public:
    LinkOpener(ambrel::SystemTools tools, ambrel::Environment environment);

    /// Hands `url` over. A failure is swallowed: there is no program for it then, and the page
    /// stays as it is.
    void open(const std::string& url) noexcept;

private:
    ambrel::SystemTools tools_;
    ambrel::Environment environment_;
    std::vector<ambrel::ChildProcess>
        started_; ///< until they have ended, so that none is left over
};

} // namespace korvane::runner
