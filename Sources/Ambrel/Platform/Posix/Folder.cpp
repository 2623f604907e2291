#include "Ambrel/Platform/Posix/Folder.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/Retry.h"

#include <fcntl.h>
#include <string_view>

namespace ambrel {

Folder::Folder(OwnedFd fd, Path path) : path_(std::move(path)), stream_(::fdopendir(fd.get())) {
    if (!stream_) throwFileError("list", path_);
    fd.release();
}

Folder Folder::openAt(int parent, const std::string& name, const Path& path,
                      const std::string& action) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    OwnedFd fd(retryInterrupted([&] { return ::openat(parent, name.c_str(), flags); }));
    if (!fd) throwFileError(action, path);
    return {std::move(fd), path};
}

std::vector<std::string> Folder::names(const std::string& action) const {
    std::vector<std::string> result;
    ::rewinddir(stream_.get());
    while (auto name = nextName(action)) result.push_back(std::move(*name));
    return result;
}

bool Folder::isEmpty(const std::string& action) const {
    ::rewinddir(stream_.get());
    return !nextName(action);
}

/// Absent at the end.
std::optional<std::string> Folder::nextName(const std::string& action) const {
    while (true) {
        errno = 0; // the only way to tell the end from a failure
        const auto* entry = ::readdir(stream_.get());
        if (entry == nullptr && errno != 0) throwFileError(action, path_);
        if (entry == nullptr) return std::nullopt;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") return std::string(name);
    }
}

} // namespace ambrel
