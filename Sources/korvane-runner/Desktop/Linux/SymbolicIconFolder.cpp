#include "korvane-runner/Desktop/Linux/SymbolicIconFolder.h"

#include "Ambrel/Base/RandomName.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Images.h"
#include "korvane-runner/Desktop/Linux/StatusPixels.h"

#include <cstdlib>
#include <optional>
#include <string_view>

namespace korvane::runner {

namespace {

using namespace ambrel;

// What the names of such folders are known by.
constexpr std::string_view beginning = ".korvane-";
constexpr std::string_view ending = "-icons";

/// Absent where the session has none.
std::optional<Path> sessionFolder() {
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || *folder != '/') return std::nullopt;
    return Path(folder);
}

/// The folder of an icon theme for pictures with this side; themes know no others. Null: none.
const char* themeFolderFor(std::uint32_t side) {
    switch (side) {
    case 22:
        return "22x22";
    case 36:
        return "36x36";
    case 44:
        return "22x22@2";
    default:
        return nullptr;
    }
}

/// Nobody is told: what remains is removed by another start, or by the end of the session.
void removeIfPossible(const Path& folder) noexcept {
    try {
        fileSystem::removeTree(folder);
    } catch (const std::exception&) {
    }
}

} // namespace

std::unique_ptr<SymbolicIconFolder> SymbolicIconFolder::tryTake(const Path& parent) {
    const Path path = parent + "/" + randomName() + std::string(ending);
    constexpr unsigned closedToOthers = 0700;
    fileSystem::createFolder(path, closedToOthers);
    if (auto lock = FolderLock::tryTake(path)) {
        return std::unique_ptr<SymbolicIconFolder>(new SymbolicIconFolder(path, std::move(*lock)));
    }
    removeIfPossible(path);
    return nullptr;
}

std::unique_ptr<SymbolicIconFolder> SymbolicIconFolder::tryMake(const std::string& name,
                                                                const std::vector<Image>& sizes) {
    try {
        const auto parent = sessionFolder();
        if (!parent) return nullptr;
        auto folder = tryTake(*parent);
        // Somebody who was looking for abandoned ones may have come before the lock.
        if (!folder) folder = tryTake(*parent);
        if (!folder) return nullptr;
        for (const auto& image : sizes) folder->put(name, image);
        return folder;
    } catch (const std::exception&) {
        return nullptr; // the panel is left with the pixels
    }
}

void SymbolicIconFolder::put(const std::string& name, const Image& image) const {
    const char* side = themeFolderFor(image.width);
    if (side == nullptr) return;
    const Path folder = path_ + "/hicolor/" + side + "/apps";
    fileSystem::createFolders(folder);
    // In such a file black is what takes the colour of the text.
    constexpr std::uint8_t black = 0;
    fileSystem::write(folder + "/" + name + ".symbolic.png",
                      images::encodePng(filledWithGrey(image, black)));
}

void SymbolicIconFolder::removeAbandoned() noexcept {
    try {
        const auto parent = sessionFolder();
        if (!parent) return;
        for (const auto& name : fileSystem::list(*parent)) {
            if (!name.starts_with(beginning) || !name.ends_with(ending)) continue;
            const Path folder = *parent + "/" + name;
            // Held until nothing is left, so that nobody begins to use it meanwhile.
            if (const auto lock = FolderLock::tryTake(folder)) removeIfPossible(folder);
        }
    } catch (const std::exception&) {
        // There is nothing of ours then.
    }
}

SymbolicIconFolder::~SymbolicIconFolder() { removeIfPossible(path_); }

} // namespace korvane::runner
