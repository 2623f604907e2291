#include "Manager/Operations/Unchanged.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Refusal.h"

namespace korvane {

bool isUnchanged(const ambrel::InstanceRecord& planned, const ambrel::InstanceRecord& found) {
    return planned.bundleURL == found.bundleURL && planned.config.encode() == found.config.encode();
}

void requireUnchanged(const ambrel::InstanceRecord& planned, const ambrel::UserPlaces& user) {
    const auto found = ambrel::InstanceRegistry(user).recordFor(planned.bundleURL);
    if (found && isUnchanged(planned, *found)) return;
    throw Refusal(Refusal::Kind::changedMeanwhile, planned.bundleURL,
                  "The instance at " + ambrel::utf8::oneLine(planned.bundleURL) +
                      " has changed since it was looked at.",
                  Remedy::lookAgain);
}

} // namespace korvane
