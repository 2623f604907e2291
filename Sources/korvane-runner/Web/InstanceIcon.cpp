#include "korvane-runner/Web/InstanceIcon.h"

#include "Ambrel/Formats/Icns.h"
#include "Ambrel/Graphics/PictureChoice.h"
#include "Ambrel/Platform/FileSystem.h"

namespace korvane::runner {

namespace {

using namespace ambrel;

constexpr std::uint32_t suitableSide = 128;

bool holdsAlready(const Path& file, const std::string& bytes) {
    return fileSystem::exists(file) && fileSystem::read(file) == bytes;
}

} // namespace

std::optional<std::string> bannerPicture(std::string_view icns) {
    const icns::Picture* best = nullptr;
    const auto pictures = icns::pictures(icns);
    for (const auto& picture : pictures) {
        if (picture.payload != icns::Payload::png) continue;
        if (best == nullptr || suitsBetter(picture, *best, suitableSide)) best = &picture;
    }
    return best == nullptr ? std::nullopt : std::optional(std::string(best->bytes));
}

Path ensurePicture(const Path& icns, const Path& png) noexcept {
    try {
        const auto bytes = bannerPicture(fileSystem::read(icns));
        if (!bytes) return {};
        if (!holdsAlready(png, *bytes)) fileSystem::replace(png, *bytes);
        return png;
    } catch (const std::exception&) {
        return {};
    }
}

} // namespace korvane::runner
