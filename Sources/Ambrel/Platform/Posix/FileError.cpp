#include "Ambrel/Platform/FileError.h"

#include "Ambrel/Base/Utf8.h"

#include <cerrno>
#include <cstring>

namespace ambrel {

std::string errorReason(int code) {
#ifdef __GLIBC__
    // The manager may set the user's locale; messages stay in one language.
    if (const char* text = strerrordesc_np(code)) return text;
    return "Unknown error " + std::to_string(code);
#else
    return std::strerror(code);
#endif
}

FileError::FileError(const std::string& action, const Path& failedPath, int errorCode)
    : std::runtime_error(
          utf8::oneLine("Cannot " + action + " " + failedPath + ": " + errorReason(errorCode))),
      path(failedPath), code(errorCode) {}

void throwFileError(const std::string& action, const Path& path) {
    throw FileError(action, path, errno);
}

} // namespace ambrel
