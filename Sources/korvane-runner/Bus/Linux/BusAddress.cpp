#include "korvane-runner/Bus/Linux/BusAddress.h"

#include "Ambrel/Base/TextParts.h"
#include "Ambrel/Platform/Posix/Retry.h"
#include "Ambrel/Platform/SocketPath.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

namespace korvane::runner::bus {

namespace {

using namespace ambrel;

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/// Bytes that stand as they are in an address. Those who read one let others pass, too.
bool isPlain(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           std::string_view("-_/\\*.").find(c) != std::string_view::npos;
}

std::optional<std::string> unescaped(std::string_view value) {
    std::string result;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '%') {
            result += value[i];
            continue;
        }
        if (i + 2 >= value.size()) return std::nullopt;
        const int high = hexDigit(value[i + 1]);
        const int low = hexDigit(value[i + 2]);
        if (high < 0 || low < 0) return std::nullopt;
        result += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return result;
}

std::string escaped(std::string_view value) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char c : value) {
        if (isPlain(c)) {
            result += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        result += {'%', digits[byte >> 4U], digits[byte & 15U]};
    }
    return result;
}

std::optional<BusAddress> ofValue(std::string_view key, std::string value,
                                  std::string_view runtimeFolder) {
    using Kind = BusAddress::Kind;
    if (key == "abstract") return BusAddress{Kind::abstract, std::move(value)};
    if (key == "path") return BusAddress{Kind::file, std::move(value)};
    if (key == "runtime" && value == "yes" && !runtimeFolder.empty()) {
        return BusAddress{Kind::file, std::string(runtimeFolder) + "/bus"};
    }
    return std::nullopt;
}

bool canBe(const BusAddress& address) {
    if (address.name.empty() || address.name.size() > longestSocketPath()) return false;
    if (address.kind == BusAddress::Kind::abstract) return true;
    return address.name.starts_with('/') && address.name.find('\0') == std::string::npos;
}

/// Of one address among several.
std::optional<BusAddress> parseOne(std::string_view text, std::string_view runtimeFolder) {
    if (takeUntil(text, ':') != "unix") return std::nullopt;
    std::optional<BusAddress> found;
    while (!text.empty()) {
        auto value = takeUntil(text, ',');
        const auto key = takeUntil(value, '=');
        auto plain = unescaped(value);
        if (!plain) return std::nullopt;
        if (auto address = ofValue(key, std::move(*plain), runtimeFolder); address && !found) {
            found = std::move(address);
        }
    }
    if (found && !canBe(*found)) return std::nullopt;
    return found;
}

} // namespace

std::optional<BusAddress> BusAddress::parse(std::string_view text, std::string_view runtimeFolder) {
    while (!text.empty()) {
        if (auto address = parseOne(takeUntil(text, ';'), runtimeFolder)) return address;
    }
    return std::nullopt;
}

std::optional<BusAddress> BusAddress::ofSession(std::string_view variable,
                                                std::string_view runtimeFolder) {
    if (!variable.empty()) return parse(variable, runtimeFolder);
    if (!runtimeFolder.starts_with('/')) return std::nullopt;
    BusAddress usual{Kind::file, std::string(runtimeFolder) + "/bus"};
    if (!canBe(usual) || !isSocketOfUser(usual.name)) return std::nullopt;
    return usual;
}

std::string BusAddress::text() const {
    return (kind == Kind::file ? "unix:path=" : "unix:abstract=") + escaped(name);
}

Connecting connectTo(const BusAddress& address) {
    OwnedFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket) return {.error = errno};
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    // An abstract name begins behind a zero byte, and has the length that is told.
    const std::size_t before = address.kind == BusAddress::Kind::abstract ? 1 : 0;
    std::memcpy(place.sun_path + before, address.name.data(), address.name.size());
    auto size = offsetof(sockaddr_un, sun_path) + address.name.size() + 1;
    const auto connected = retryInterrupted([&] {
        return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&place),
                         static_cast<socklen_t>(size));
    });
    if (connected != 0) return {.error = errno};
    return {.socket = std::move(socket)};
}

} // namespace korvane::runner::bus
