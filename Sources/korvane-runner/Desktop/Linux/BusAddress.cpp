#include "korvane-runner/Desktop/Linux/BusAddress.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/SocketPath.h"

#include <algorithm>
#include <cstdlib>

namespace korvane::runner {

namespace {

using namespace ambrel;

bool isUsable(std::string_view address) {
    constexpr std::string_view socket = "unix:path=";
    if (!address.starts_with(socket)) return true;
    address.remove_prefix(socket.size());
    const Path path(address.substr(0, address.find(',')));
    // All of the machine's files would be open to the helper, and changed by it.
    const bool isAtTheTop = fileSystem::isSameItem(Path(paths::deletingLastComponent(path)), "/");
    return path.starts_with('/') && !isAtTheTop && fileSystem::exists(path);
}

void forgetLost(const char* variable) {
    constexpr int replacing = 1;
    const char* value = std::getenv(variable);
    if (value == nullptr) return;
    const auto usable = usableBusAddress(value);
    if (usable.empty()) {
        ::unsetenv(variable);
    } else if (usable != value) {
        ::setenv(variable, usable.c_str(), replacing);
    }
}

/// Whether a bus is where no address is told, as GIO judges it.
bool isBusAtUsualPlace() {
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || *folder != '/') return false;
    return isSocketOfUser(std::string(folder) + "/bus");
}

} // namespace

std::string usableBusAddress(std::string_view address) {
    while (!address.empty()) {
        const auto first = address.substr(0, address.find(';'));
        if (!first.empty() && isUsable(first)) return std::string(first);
        address.remove_prefix(std::min(first.size() + 1, address.size()));
    }
    return {};
}

void forgetLostBuses() noexcept {
    forgetLost("DBUS_SESSION_BUS_ADDRESS");
    forgetLost("AT_SPI_BUS_ADDRESS");
}

bool hasSessionBusAddress() noexcept {
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address == nullptr) return isBusAtUsualPlace();
    return std::string_view(address).find("autolaunch:") == std::string_view::npos;
}

} // namespace korvane::runner
