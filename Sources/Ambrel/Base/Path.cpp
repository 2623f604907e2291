#include "Ambrel/Base/Path.h"

namespace ambrel::paths {

Path join(std::string_view left, std::string_view right) {
    if (left.empty()) return Path(right);
    if (right.empty()) return Path(left);
    while (left.ends_with('/')) left.remove_suffix(1);
    while (right.starts_with('/')) right.remove_prefix(1);
    Path joined;
    joined.reserve(left.size() + 1 + right.size());
    return joined.append(left).append("/").append(right);
}

std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    return path;
}

std::string_view lastComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    if (path == "/") return path;
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view deletingLastComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const auto slash = path.rfind('/');
    if (slash == std::string_view::npos) return {};
    return slash == 0 ? path.substr(0, 1) : withoutTrailingSlashes(path.substr(0, slash));
}

namespace {

std::size_t extensionDot(std::string_view name) {
    const auto dot = name.rfind('.');
    const bool hasExtension = dot != std::string_view::npos && dot > 0 && dot + 1 < name.size();
    return hasExtension ? dot : std::string_view::npos;
}

} // namespace

std::string_view extension(std::string_view path) {
    const auto name = lastComponent(path);
    const auto dot = extensionDot(name);
    return dot == std::string_view::npos ? std::string_view{} : name.substr(dot + 1);
}

std::string_view stem(std::string_view path) {
    const auto name = lastComponent(path);
    return name.substr(0, extensionDot(name));
}

} // namespace ambrel::paths
