#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Manager/Operations/CreationPlan.h"

namespace korvane {

/// Fills what `request` leaves open with what the instance `replaced` has of its user's own: home,
/// identifier, label and the like, and how it is started, as far as the new kind heeds that. What
/// was worked out for it is left out, to be worked out anew; for another application that is the
/// strategy too. Of what was kept nothing is told that an instance of that name has anyway.
/// Throws LibraryError where the system lacks what applications are read with.
KeptParts keepParts(const ambrel::InstanceRecord& replaced, CreateRequest& request,
                    const ambrel::UserPlaces& user, const ambrel::Environment& environment);

} // namespace korvane
