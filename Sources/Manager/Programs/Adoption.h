#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/Notice.h"
#include "Manager/Programs/ProgramCall.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

/// Making application bundles out of installed programs, on systems where programs come in another
/// form. One backend for each system.
namespace korvane {

/// An installed program as the application bundle that it is to become.
struct Adoption {
    std::string name;                         ///< the bundle's name
    std::map<std::string, std::string> names; ///< in other languages, as the system spells those
    std::string identifier;                   ///< CFBundleIdentifier
    ProgramCall call;                         ///< what it starts, the program as an absolute path
    ambrel::Path program;                     ///< the one behind that call, which "env" may start
    std::optional<ambrel::Path> icon;
    std::string categories; ///< separated by ";"; empty when the entry names none
    std::string mimeTypes;  ///< those that its entry opens, separated by ";"; empty without any
    /// In a terminal: that program and its arguments in front of those of `call`.
    std::optional<ProgramCall> terminal;
    /// The shell for a launcher that starts the program by the name of an instance; absent where
    /// that cannot be done or would do nothing.
    std::optional<ambrel::Path> namingShell;
    bool isActivatable = false;  ///< the session bus can start it, and a copy that runs may answer
    std::vector<Notice> notices; ///< what will not work as the user may expect
    /// The entry has a "--" between what the program is given and the files that it opens.
    bool wantsOpenMark = false;
};

/// Whether programs are adopted on this system; not on macOS, where they are applications already.
bool adoptionIsOffered() noexcept;

/// An installed program as the system's menu has it.
struct ListedProgram {
    ambrel::Path file; ///< for planAdoption()
    std::string id;
    std::string name;
    std::vector<std::string> translatedNames; ///< the name in any other language
    std::string command;   ///< the last component of what is started; empty where nothing can be
    bool isShown = false;  ///< in menus
    bool isUsable = false; ///< it is installed, and not taken out of the list by its own words
};

/// All of them, without those that stand for instances; empty where adoption is not offered.
std::vector<ListedProgram> listPrograms(const ambrel::UserPlaces& user,
                                        const ambrel::Environment& environment);

/// Those that start `program` (absolute) itself, and no single feature of it: the best one, or
/// several where nothing tells which is meant. Empty where there is none.
std::vector<ambrel::Path> entriesOf(const ambrel::Path& program, const ambrel::UserPlaces& user,
                                    const ambrel::Environment& environment);

/// What the program at `file` (absolute) is to become: a ListedProgram's or another entry of the
/// kind, or the program's own file. Throws Refusal unknownProgram, and notAdoptable for programs
/// that cannot be started this way; where adoption is not offered, notOffered.
Adoption planAdoption(const ambrel::Path& file, const ambrel::UserPlaces& user,
                      const ambrel::Environment& environment);

/// Makes the bundle of `adoption` at `bundle`, in a folder that exists. Throws FileError,
/// EncodingError or LibraryError, with a part of it left there.
void writeAdoptedBundle(const Adoption& adoption, const ambrel::Path& bundle);

/// Something in the bundle of `app`, relative to it, that writeAdoptedBundle() never makes; absent
/// where there is nothing of the kind. Throws FileError where it cannot be looked at.
std::optional<ambrel::Path> findForeignItem(const ambrel::AppBundle& app);

} // namespace korvane
