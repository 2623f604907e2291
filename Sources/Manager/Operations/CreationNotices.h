#pragma once

#include "Manager/Operations/Creation.h"

namespace korvane {

/// What will not work as a person may expect, of an instance that was made by `plan`.
std::vector<Notice> noticesOn(const CreationPlan& plan, const ambrel::InstanceRecord& made,
                              const ambrel::UserPlaces& user);

/// What it was made with: profileUsed, profileIsBroken and homeExisted.
std::vector<Notice> noticesOnOrigin(const CreationPlan& plan, const Created& created);

} // namespace korvane
