#include "Ambrel/Platform/Posix/ExtendedAttributes.h"

#include "Ambrel/Platform/FileError.h"

#include <cerrno>
#include <cstring>
#include <string_view>
#include <sys/xattr.h>
#include <vector>

namespace ambrel {

namespace {

/// What `query` (of a buffer and its size) fills in; repeated when it grew since its size was
/// asked.
template <class Query> std::vector<char> attributeBytes(const Query& query, const Path& path) {
    while (true) {
        const auto size = query(nullptr, 0);
        if (size < 0 && errno == ENOTSUP) return {};
        if (size < 0) throwFileError("read the attributes of", path);
        std::vector<char> bytes(static_cast<std::size_t>(size));
        if (size == 0) return bytes;
        const auto filled = query(bytes.data(), bytes.size());
        if (filled < 0 && errno == ERANGE) continue;
        if (filled < 0) throwFileError("read the attributes of", path);
        bytes.resize(static_cast<std::size_t>(filled));
        return bytes;
    }
}

void copyAttribute(int original, int copy, const char* name, const Path& path) {
    const auto value = attributeBytes(
        [&](char* buffer, std::size_t size) { return ::fgetxattr(original, name, buffer, size); },
        path);
    const bool set = ::fsetxattr(copy, name, value.data(), value.size(), 0) == 0;
    const bool userOwned = std::string_view(name).starts_with("user.");
    if (!set && userOwned) throwFileError("set the attributes of", path);
}

} // namespace

void copyExtendedAttributes(int original, int copy, const Path& path) {
    auto names = attributeBytes(
        [&](char* buffer, std::size_t size) { return ::flistxattr(original, buffer, size); }, path);
    if (names.empty()) return;
    names.push_back('\0');
    for (std::size_t at = 0; at + 1 < names.size(); at += std::strlen(&names[at]) + 1) {
        copyAttribute(original, copy, &names[at], path);
    }
}

} // namespace ambrel
