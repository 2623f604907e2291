#pragma once

#include "Ambrel/Application/AdoptedProgram.h"

/// Keys of our own in property lists, beside ambrel::processNameKey.
namespace korvane {

/// In a wrapper's overrides: the name of its windows, where that is neither its process name nor
/// its desktop id.
inline constexpr const char* windowClassKey = "KorvaneWindowClass";

/// In an adopted bundle: the program behind the launcher, the terminal that it is opened in, the
/// menu's categories that its entry names (Desktop Menu Specification), and the types of files and
/// addresses that it opens, the last two as lists with ";" between their words. Whether the session
/// bus can start it.
using ambrel::adoptedProgramKey;
inline constexpr const char* adoptedTerminalKey = "KorvaneTerminal";
inline constexpr const char* adoptedCategoriesKey = "KorvaneCategories";
inline constexpr const char* adoptedMimeTypesKey = "KorvaneMimeTypes";
inline constexpr const char* adoptedActivatableKey = "KorvaneActivatable";

} // namespace korvane
