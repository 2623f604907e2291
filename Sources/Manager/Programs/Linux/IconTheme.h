#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <string>
#include <vector>

namespace korvane {

/// The icon themes of this user by the Icon Theme Specification.
class IconThemes {
public:
    IconThemes(const ambrel::UserPlaces& user, const ambrel::Environment& environment);

    /// The theme that the user has chosen for GTK (gtk-4.0 or gtk-3.0/settings.ini) or KDE
    /// (kdeglobals), as far as files tell it, each followed by those that it inherits.
    const std::vector<std::string>& chosen() const { return chosen_; }
    /// All others that are installed: those that desktops bring along first. "hicolor", which every
    /// theme inherits, is in neither list.
    const std::vector<std::string>& others() const { return others_; }

    /// The folders in which a theme has pictures, whatever their size, scale and context: those of
    /// its index.theme in every place where icons are installed. Without an index, and in
    /// "hicolor", to which programs add sizes of their own, also those that are there.
    std::vector<ambrel::Path> foldersOf(const std::string& theme) const;

    /// The folders for icons themselves, in which pictures may lie that belong to no theme.
    const std::vector<ambrel::Path>& places() const { return places_; }

private:
    std::string indexOf(const std::string& theme) const;
    void addChosen(const std::string& theme);
    void addOthers();

    std::vector<ambrel::Path> places_;
    std::vector<std::string> chosen_;
    std::vector<std::string> others_;
};

} // namespace korvane
