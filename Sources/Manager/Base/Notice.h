#pragma once

#include "Manager/Base/Remedy.h"

#include <string>
#include <utility>
#include <vector>

namespace korvane {

/// Something that a person should hear about a thing that was done.
struct Notice {
    enum class Severity { information, warning };

    enum class Kind {
        // What an instance will not do as one may expect.
        targetIsSandboxed,     ///< subject: the application's name
        targetRunsOnce,        ///< subject: the application's name
        engineIsMissing,       ///< opening the instance will fail; subject: the package it needs
        strategyIsUnsupported, ///< opening the instance will fail
        nothingAtPath,         ///< subject: a path of the configuration
        nothingToShow,         ///< subject: how the instance is named, whose address is none
        // Its icon.
        labelWithoutIcon,
        labelNotDrawn,
        // Its home.
        homeIsLong,       ///< subject: the home
        homeIsNotPrivate, ///< subject: the home
        homeExisted,      ///< subject: the home, which was not asked for
        homeNotFurnished, ///< subject: the home, in which something could not be made
        homeIsOverridden, ///< subject: the variable that leads away from the home
        // What it was made with.
        profileUsed,              ///< subject: the profile's file
        profileIsBroken,          ///< subject: the profile's file
        handsOverToRunningCopy,   ///< subject: the adopted program's name
        busSettingUnheeded,       ///< subject: the setting, which needs names on the bus
        meetsBySocket,            ///< subject: the application's name
        meetsByWindow,            ///< subject: the application's name
        mayMeetUnseen,            ///< subject: the application's name, of which nothing is told
        programAdopted,           ///< subject: the bundle that was made of the program
        windowsKeepName,          ///< subject: the program's name, which its windows go by
        homeFromAccount,          ///< subject: the program, which asks the account for the home
        argumentsOfProfileUnused, ///< subject: the profile's file; others were given
        keptOfReplaced,           ///< subject: how the instance is named
        droppedOfReplaced,        ///< subject: how the instance is named
        separationDropped,        ///< subject: how the instance is named
        lookWithoutItem,          ///< of a status item; subject: how the instance is named
        // What is left or missing elsewhere.
        remainsLeft,     ///< subject: the hidden folder in which they lie
        notRegistered,   ///< subject: how the instance is named
        entryIsOutdated, ///< subject: how the instance is named
        entryNotRemoved, ///< subject: the entry's file
        mayBeDefault,    ///< subject: how the instance is named, which offers itself
    };

    Kind kind{};
    Severity severity = Severity::warning;
    std::string subject;  ///< a path or name, alone and unescaped; empty where there is none
    std::string sentence; ///< one line in English, without the remedy; names in it are escaped
    Remedy remedy = Remedy::none;

    bool operator==(const Notice&) const = default;
};

/// Puts `more` behind `notices`.
inline void append(std::vector<Notice>& notices, std::vector<Notice> more) {
    for (auto& notice : more) notices.push_back(std::move(notice));
}

} // namespace korvane
