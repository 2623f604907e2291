#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Desktop/Registration.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// Something about an instance, or an entry, that is not as its configuration has it.
struct Difference {
    enum class Kind {
        // What is mended.
        runnerMissing,
        runnerNotRunnable, ///< it may not be executed
        runnerDiffers,     ///< it is that of another version
        infoPlistMissing,  ///< or no property list
        infoPlistDiffers,
        entryMissing,
        entryOutdated, ///< or what belongs to it; subject: the first such file
        entryStray,    ///< it stands for a bundle that is gone; subject: that bundle
        entryFormer,   ///< it stands for the instance under an identifier of before
        entryOrphaned, ///< it stands for a bundle that is gone, and for no instance
        // What is left as it is.
        iconMissing,      ///< the one of the bundle
        entryTaken,       ///< what stands in its place is another's
        entryImpossible,  ///< no entry can hold the instance
        identifierShared, ///< subject: the other bundle; nothing else is looked at then
        bundleUnreadable, ///< subject: the bundle, which has no configuration that can be read
    };
    Kind kind{};
    std::optional<ambrel::InstanceRecord> record{}; ///< absent where there is none
    ambrel::Path subject{};                         ///< the file, unless the kind says otherwise
    std::string sentence{};                     ///< one line in English; names in it are escaped
    std::optional<registration::Entry> entry{}; ///< of entryFormer and entryOrphaned

    bool isMendable() const { return kind < Kind::iconMissing; }
};

/// What differs, instance by instance.
struct RepairPlan {
    ambrel::Path runner; ///< the one that instances are to have
    std::vector<Difference> differences;
};

/// Finds out what differs at `only`, or else at all instances in the default folder and those
/// elsewhere that entries name or that were taken off the desktop, and which entries stand for
/// nothing; changes nothing. `runner` absent: the one
/// that instances are made with. Throws Refusal unusableRunner, and LibraryError.
RepairPlan planRepair(const std::optional<ambrel::InstanceRecord>& only,
                      const std::optional<ambrel::Path>& runner, const ambrel::UserPlaces& user,
                      const ambrel::Environment& environment);

/// What became of the differences that can be mended.
struct Repaired {
    struct Failure {
        Difference difference;
        std::string reason;
    };
    std::vector<Difference> mended;
    std::vector<Failure> failures; ///< all others are mended
};

/// Mends what `plan` names, each file in one step; a program that runs is not disturbed. Homes and
/// configurations are never touched, nor is an instance that has changed since. What commands that
/// were killed left hidden in the default folder goes too. Throws FileError where the runner cannot
/// be read.
Repaired perform(const RepairPlan& plan, const ambrel::UserPlaces& user);

} // namespace korvane
