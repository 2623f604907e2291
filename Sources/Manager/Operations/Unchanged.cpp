#include "Manager/Operations/Unchanged.h"

#include "Ambrel/Base/Utf8.h"

namespace korvane {

namespace {

Refusal changed(const std::string& what, const ambrel::Path& place, const std::string& more) {
    return Refusal(Refusal::Kind::changedMeanwhile, place,
                   what + ambrel::utf8::oneLine(place) + " has changed since it was looked at" +
                       more + ".",
                   Remedy::lookAgain);
}

} // namespace

Refusal placeChanged(const ambrel::Path& place, const std::string& more) {
    return changed("What stands at ", place, more);
}

Refusal instanceChanged(const ambrel::Path& bundle) {
    return changed("The instance at ", bundle, "");
}

bool isUnchanged(const ambrel::InstanceRecord& planned, const ambrel::InstanceRecord& found) {
    return planned.bundleURL == found.bundleURL && planned.config.encode() == found.config.encode();
}

void requireUnchanged(const ambrel::InstanceRecord& planned, const ambrel::UserPlaces& user) {
    const auto found = ambrel::InstanceRegistry(user).recordFor(planned.bundleURL);
    if (found && isUnchanged(planned, *found)) return;
    throw instanceChanged(planned.bundleURL);
}

} // namespace korvane
