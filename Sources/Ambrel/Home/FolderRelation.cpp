#include "Ambrel/Home/FolderRelation.h"

#include "Ambrel/Platform/FileSystem.h"

#include <algorithm>

namespace ambrel::folders {

namespace {

/// An absolute path with ".", ".." and repeated slashes taken out by its text alone.
Path lexicallyNormal(const Path& path) {
    Path normal = "/";
    for (std::string_view rest = path; !rest.empty();) {
        const auto name = rest.substr(0, rest.find('/'));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        if (name.empty() || name == ".") continue;
        if (name == "..") {
            normal = Path(paths::deletingLastComponent(normal));
        } else {
            normal = paths::join(normal, name);
        }
    }
    return normal;
}

} // namespace

Path canonical(const Path& path) {
    if (auto resolved = fileSystem::resolved(path)) return *resolved;
    const Path above{paths::deletingLastComponent(path)};
    if (above.empty() || above == path) return path;
    const auto parent = canonical(above);
    const auto name = paths::lastComponent(path);
    if (name == ".") return parent;
    if (name == "..") return Path(paths::deletingLastComponent(parent));
    const auto joined = paths::join(parent, name);
    return fileSystem::resolved(joined).value_or(joined);
}

bool areSame(const Path& left, const Path& right) {
    return fileSystem::isSameItem(left, right) || canonical(left) == canonical(right);
}

bool isOrLiesIn(const Path& inner, const Path& outer) {
    const auto target = canonical(outer);
    auto place = canonical(inner);
    while (!place.empty()) {
        if (place == target || fileSystem::isSameItem(place, target)) return true;
        if (place == "/") break;
        place = Path(paths::deletingLastComponent(place));
    }
    return false;
}

bool isOrLiesInByText(const Path& inner, const Path& outer) {
    const auto place = lexicallyNormal(inner);
    const auto target = lexicallyNormal(outer);
    return place == target || target == "/" || place.starts_with(target + "/");
}

} // namespace ambrel::folders
