#include "Ambrel/Platform/SocketPath.h"

#include <sys/socket.h>
#include <sys/un.h>

namespace ambrel {

std::size_t longestSocketPath() noexcept {
    return sizeof(sockaddr_un::sun_path) - 1; // a NUL byte ends it
}

} // namespace ambrel
