#include "korvane-runner/Bus/ShownApplications.h"

#include "korvane-runner/Bus/ShownEntry.h"

namespace korvane::runner::bus {

using namespace ambrel;

bool ShownApplications::contains(const std::string& name) {
    if (const auto known = known_.find(name); known != known_.end()) return known->second;
    const bool isShown = read(name);
    // Few programs have more names than one: those of one that does are read again.
    if (known_.size() >= mostRemembered) known_.clear();
    known_.emplace(name, isShown);
    return isShown;
}

bool ShownApplications::read(const std::string& name) const {
    for (const auto& folder : dataFolders_) {
        const auto text = reader_(paths::join(folder, "applications/" + name + ".desktop"));
        if (text) return isShownApplication(*text); // the first of a name is meant
    }
    return false;
}

} // namespace korvane::runner::bus
