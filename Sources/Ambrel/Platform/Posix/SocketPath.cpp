#include "Ambrel/Platform/SocketPath.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace ambrel {

std::size_t longestSocketPath() noexcept {
    return sizeof(sockaddr_un::sun_path) - 1; // a NUL byte ends it
}

bool isSocketOfUser(const Path& path) noexcept {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode) &&
           status.st_uid == ::geteuid();
}

} // namespace ambrel
