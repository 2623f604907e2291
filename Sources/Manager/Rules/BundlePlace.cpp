#include "Manager/Rules/BundlePlace.h"

#include "Ambrel/Platform/FileSystem.h"

namespace korvane {

using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

bool isSameBundle(const Path& left, const Path& right) {
    return paths::withoutTrailingSlashes(left) == paths::withoutTrailingSlashes(right) ||
           fileSystem::isSameItem(left, right);
}

bool isLink(const Path& path) {
    return fileSystem::kindOf(Path(paths::withoutTrailingSlashes(path))) ==
           fileSystem::ItemKind::symbolicLink;
}

Path bundleAt(const Path& path) {
    Path bundle{paths::withoutTrailingSlashes(path)};
    if (!isLink(bundle)) return bundle;
    return fileSystem::resolved(bundle).value_or(bundle);
}

} // namespace korvane
