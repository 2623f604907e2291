#include "Manager/Files/TreeSize.h"

#include <filesystem>

namespace korvane {

namespace {

using std::filesystem::directory_options;
using std::filesystem::recursive_directory_iterator;

void add(TreeSize& size, const std::filesystem::directory_entry& entry) {
    std::error_code code;
    size.items += 1;
    const bool isFile = entry.symlink_status(code).type() == std::filesystem::file_type::regular;
    const auto bytes = isFile ? entry.file_size(code) : 0;
    if (!code) size.bytes += bytes;
}

TreeSize measured(const std::filesystem::path& path) {
    TreeSize size;
    const std::filesystem::directory_entry root(path);
    if (!std::filesystem::exists(root.symlink_status())) return size;
    add(size, root);
    if (root.is_symlink() || !root.is_directory()) return size;
    std::error_code code;
    recursive_directory_iterator items(path, directory_options::skip_permission_denied, code);
    for (; !code && items != recursive_directory_iterator(); items.increment(code)) {
        add(size, *items);
    }
    return size;
}

} // namespace

TreeSize sizeOfTree(const ambrel::Path& path) noexcept {
    try {
        return measured(ambrel::Path(ambrel::paths::withoutTrailingSlashes(path)));
    } catch (const std::exception&) {
        // It only tells a person how much there is.
        return {};
    }
}

} // namespace korvane
