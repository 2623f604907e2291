#include "Ambrel/Platform/Terminal.h"

#include <sys/ioctl.h>

namespace ambrel::terminal {

std::optional<std::size_t> columnsOf(int descriptor) noexcept {
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
    return size.ws_col;
}

} // namespace ambrel::terminal
