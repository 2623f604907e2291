#pragma once

#include "Manager/Operations/Creation.h"

namespace korvane {

/// What will not work as a person may expect, of an instance that was made by `plan`.
std::vector<Notice> noticesOn(const CreationPlan& plan, const ambrel::InstanceRecord& made,
                              const ambrel::UserPlaces& user);

/// That an instance `config` of `target`, started by `start`, shares the session bus with the
/// copies of a program that meet there; absent where it does not, or they do not.
std::optional<Notice> busObstacle(const StartPlan& start, const ambrel::AppBundle& target,
                                  const ambrel::InstanceConfig& config);

/// What it was made with: profileUsed, profileIsBroken and homeExisted.
std::vector<Notice> noticesOnOrigin(const CreationPlan& plan, const Created& created);

} // namespace korvane
