#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/Notice.h"
#include "Manager/Programs/ProgramCall.h"

#include <optional>
#include <string>
#include <vector>

/// Making application bundles out of installed programs, on systems where programs come in another
/// form. One backend for each system.
namespace korvane {

/// An installed program as the application bundle that it is to become.
struct Adoption {
    std::string name;       ///< the bundle's name
    std::string identifier; ///< CFBundleIdentifier
    ProgramCall call;       ///< what it starts, the program as an absolute path
    ambrel::Path program;   ///< the one behind that call, which "env" may start
    std::optional<ambrel::Path> icon;
    std::string categories; ///< separated by ";"; empty when the entry names none
    std::string mimeTypes;  ///< those that its entry opens, separated by ";"; empty without any
    /// In a terminal: that program and its arguments in front of those of `call`.
    std::optional<ProgramCall> terminal;
    std::vector<Notice> notices; ///< what will not work as the user may expect
};

/// Whether programs are adopted on this system; not on macOS, where they are applications already.
bool adoptionIsOffered() noexcept;

/// Finds out what `text` means: the path or id of a desktop entry, or the path or name of a
/// program. Throws Refusal unknownProgram, and notAdoptable for programs that cannot be started
/// this way; where adoption is not offered, notOffered.
Adoption planAdoption(const std::string& text, const ambrel::UserPlaces& user,
                      const ambrel::Environment& environment);

/// Makes the bundle of `adoption` at `bundle`, in a folder that exists. Throws FileError,
/// EncodingError or LibraryError, with a part of it left there.
void writeAdoptedBundle(const Adoption& adoption, const ambrel::Path& bundle);

} // namespace korvane
