#include "Manager/Files/IconConversion.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Icon/IconComposer.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/LibraryError.h"
#include "Ambrel/Platform/Text.h"
#include "Manager/Base/Refusal.h"

#include <array>
#include <fstream>

namespace korvane {

using ambrel::IconComposer;
using ambrel::IconLabel;
using ambrel::Path;

void requirePicture(const Path& picture) {
    if (ambrel::fileSystem::exists(picture) && !ambrel::fileSystem::isFolder(picture)) return;
    throw Refusal(Refusal::Kind::unusableIcon, picture,
                  "The icon is no file: " + ambrel::utf8::oneLine(picture));
}

bool isIconFile(const Path& file) {
    std::array<char, 4> start{};
    if (ambrel::fileSystem::isFolder(file)) return false;
    std::ifstream stream(file, std::ios::binary);
    return stream.read(start.data(), start.size()) &&
           std::string_view(start.data(), start.size()) == "icns";
}

Path iconFileOf(const Path& picture, const Path& folder) {
    if (isIconFile(picture)) return picture;
    auto converted = ambrel::paths::join(folder, "icon.icns");
    convertToIconFile(picture, converted);
    return converted;
}

void convertToIconFile(const Path& picture, const Path& destination) {
    try {
        const IconLabel none{"", "", IconLabel::Position::bottom};
        ambrel::fileSystem::replace(destination, IconComposer::composed(picture, none));
    } catch (const IconComposer::ComposeError& error) {
        throw Refusal(Refusal::Kind::unusableIcon, picture,
                      ambrel::utf8::oneLine(error.description()));
    }
}

bool tryConvertToIconFile(const Path& picture, const Path& destination) noexcept {
    try {
        convertToIconFile(picture, destination);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

std::optional<std::string> obstacleTo(const IconLabel& label) {
    if (!label.isVisible()) return std::nullopt;
    try {
        if (ambrel::images::BoldSansFont::nearest(ambrel::text::uppercased(label.text))) {
            return std::nullopt;
        }
        return "No font with outlines is installed: the icon stays without its label.";
    } catch (const ambrel::LibraryError& error) {
        return error.description() + ". The icon stays without its label.";
    }
}

} // namespace korvane
