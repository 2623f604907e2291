#include "Ambrel/Platform/FileError.h"

#include "Ambrel/Base/Utf8.h"

#include <cerrno>

namespace ambrel {

FileError::FileError(const std::string& action, const Path& failedPath, int errorCode)
    : std::runtime_error(
          utf8::oneLine("Cannot " + action + " " + failedPath + ": " + errorReason(errorCode))),
      path(failedPath), code(errorCode) {}

void throwFileError(const std::string& action, const Path& path) {
    throw FileError(action, path, errno);
}

} // namespace ambrel
