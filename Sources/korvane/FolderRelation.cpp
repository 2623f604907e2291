#include "korvane/FolderRelation.h"

#include "Ambrel/Platform/FileSystem.h"

namespace korvane::folders {

using ambrel::Path;

Path canonical(const Path& path) {
    if (auto resolved = ambrel::fileSystem::resolved(path)) return *resolved;
    const Path above{ambrel::paths::deletingLastComponent(path)};
    if (above.empty() || above == path) return path;
    const auto parent = canonical(above);
    const auto name = ambrel::paths::lastComponent(path);
    if (name == ".") return parent;
    if (name == "..") return Path(ambrel::paths::deletingLastComponent(parent));
    const auto joined = ambrel::paths::join(parent, name);
    return ambrel::fileSystem::resolved(joined).value_or(joined);
}

bool areSame(const Path& left, const Path& right) {
    return ambrel::fileSystem::isSameItem(left, right) || canonical(left) == canonical(right);
}

bool isOrLiesIn(const Path& inner, const Path& outer) {
    const auto target = canonical(outer);
    auto place = canonical(inner);
    while (!place.empty()) {
        if (place == target || ambrel::fileSystem::isSameItem(place, target)) return true;
        if (place == "/") break;
        place = Path(ambrel::paths::deletingLastComponent(place));
    }
    return false;
}

} // namespace korvane::folders
