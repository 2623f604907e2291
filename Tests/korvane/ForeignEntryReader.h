#pragma once

#include "Support/Expect.h"
#include "Support/Files.h"

/// Desktop entries as other programs read them.
namespace korvane::test {

/// An entry as GLib gives it to its desktops.
struct ForeignEntry {
    std::string name;
    Strings command; ///< Exec split by its quoting rules, "%%" resolved
    std::string bundle;
};
/// Fails the test when GLib takes the file for no entry of a program that can be started.
ForeignEntry readWithGLib(const Path& file);

/// What desktop-file-validate finds wrong with the file, hints included; empty when nothing.
std::string complaintsAbout(const Path& file);

} // namespace korvane::test
