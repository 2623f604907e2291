#include "Ambrel/Platform/FileError.h"

#include "Ambrel/Base/Utf8.h"

#include <cerrno>

namespace ambrel {

FileError::FileError(const std::string& failedAction, const Path& failedPath, int errorCode)
    : std::runtime_error(utf8::oneLine("Cannot " + failedAction + " " + failedPath + ": " +
                                       errorReason(errorCode))),
      action(failedAction), path(failedPath), code(errorCode) {}

void throwFileError(const std::string& action, const Path& path) {
    throw FileError(action, path, errno);
}

} // namespace ambrel
