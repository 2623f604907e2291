#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/Notice.h"

#include <optional>
#include <string>

namespace korvane {

/// Throws Refusal badAddress, with the reason, where `url` is no address of a web site.
void requireSiteAddress(const std::string& url);

/// What keeps the window of a web instance empty: it has no address, or one that is none. Absent
/// for all others.
std::optional<Notice> addressObstacle(const ambrel::InstanceRecord& record,
                                      const ambrel::UserPlaces& user);

} // namespace korvane
