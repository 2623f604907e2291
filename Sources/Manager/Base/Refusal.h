#pragma once

#include "Manager/Base/Remedy.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace korvane {

/// What was asked for is refused or failed; nothing was touched unless the kind says otherwise.
struct Refusal : std::runtime_error {
    enum class Kind {
        other, ///< a front end's own, with no more to it than its sentence
        // Texts and values of a request. The subject is the text.
        badName,
        badText, ///< not UTF-8
        badPath, ///< empty
        badAddress,
        badColor,
        badProcessName,
        badBusSetting, ///< neither true nor false, or no name on a bus
        badIdentifier, ///< empty
        nothingToOpen, ///< no application, address, document or program is given
        // Things that are looked for. The subject is the name or path that was given.
        unknownInstance,
        severalInstances,
        damagedInstance, ///< subject: the bundle, or the file in it
        unknownApplication,
        severalApplications,
        unreadableApplication,
        unknownProgram,
        unknownUser, ///< subject: a home below the home of a user whom nobody knows
        unusableProfile,
        unusableIcon,
        unusableRunner, ///< subject: its path; empty where none was found
        unknownHome,    ///< subject: a path at which no instance left its home behind
        // What is in the way.
        notAnInstance,   ///< subject: the path at which something else stands
        instanceExists,  ///< subject: the bundle
        placeTaken,      ///< subject: the path at which an application was to stand
        homeTaken,       ///< subject: the home, which another instance has
        identifierTaken, ///< subject: the bundle identifier, which another instance has
        entryTaken,      ///< subject: the file of another's desktop entry, or in the way of one
        instanceRuns,    ///< subject: how the instance is named; what was asked for ends nothing
        // What is protected.
        homeIsMissing,     ///< subject: the configured home, which is no absolute path
        homeIsUsers,       ///< subject: the home, which is or contains a folder of the user's
        homeIsShared,      ///< subject: the home, which has files of another instance's
        homeIsLink,        ///< subject: the home
        bundleIsLink,      ///< subject: the link
        foldersNotShared,  ///< subject: how the instance is named
        fieldIsBundles,    ///< subject: the field, which the bundle carries elsewhere too
        applicationNeeded, ///< subject: the application's bundle; alternatives: its instances
        // What cannot be done with this instance or program.
        hasNoEffect,  ///< subject: the field, which means nothing to this kind or system
        startedByBus, ///< subject: the application, which opens apart by names of its own alone
        notAdoptable,
        notAdopted,     ///< subject: the bundle, which was not made by adopting a program
        notOffered,     ///< this system has no such thing
        notLaunchable,  ///< subject: the path or identifier; empty where none is given
        notDescribable, ///< no desktop entry can hold it
        // What failed.
        changedMeanwhile, ///< subject: what is not as the plan found it
        notCreated,       ///< subject: the bundle
        notRemoved,       ///< subject: the bundle
        endedAtOnce,      ///< subject: how the instance is named; alternatives: its last lines
        notStopped,       ///< subject: how the instance is named; something of it still runs
        notWritten,       ///< subject: the file, which holds what it held before
        dataRemains,      ///< subject: the home, of which a part may be gone; the bundle stays
        notAllMoved,      ///< subject: the home; the rest was moved
    };

    /// A sentence of a front end's own.
    explicit Refusal(const std::string& sentence) : std::runtime_error(sentence) {}
    Refusal(Kind kind, std::string subject, const std::string& sentence,
            Remedy remedy = Remedy::none, std::vector<std::string> alternatives = {});

    /// One line in English, without the remedy; names in it are escaped.
    std::string sentence() const { return what(); }

    Kind kind = Kind::other;
    std::string subject; ///< a path, name or text, alone and unescaped
    Remedy remedy = Remedy::none;
    std::vector<std::string> alternatives; ///< what may be meant instead, by the remedy
};

} // namespace korvane
