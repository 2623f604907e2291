#include "korvane-runner/Bus/Linux/InstanceSocket.h"

#include "Ambrel/Base/StableHash.h"
#include "Ambrel/Base/TextParts.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/Retry.h"
#include "Ambrel/Platform/SocketPath.h"
#include "korvane-runner/Bus/Linux/BusProxy.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace korvane::runner::bus {

namespace {

using namespace ambrel;
using Clock = std::chrono::steady_clock;

constexpr const char* socketFile = "socket";
constexpr const char* hiddenSocketFile = "ending";
constexpr const char* busFile = "bus";
constexpr const char* newBusFile = "bus.new";
constexpr mode_t othersRights = 077;

/// What the library of the bus itself connects to: it refuses longer paths that the system takes.
constexpr std::size_t longestAddressedPath = 99;

bool isFolderOfOurs(const Path& path) {
    struct stat status {};
    constexpr mode_t othersWriting = 022;
    return path.starts_with('/') && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::getuid() && (status.st_mode & othersWriting) == 0;
}

bool fits(const SocketPlace& place) {
    return place.socketPath().size() <= std::min(longestAddressedPath, longestSocketPath());
}

/// One folder on the way, made where it is missing, and nobody's but this user's.
OwnedFd step(int parent, const std::string& name, const Path& path) {
    if (::mkdirat(parent, name.c_str(), 0700) != 0 && errno != EEXIST) throwFileError("make", path);
    OwnedFd folder(::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) throwFileError("open", path);
    struct stat status {};
    if (::fstat(folder.get(), &status) != 0) throwFileError("open", path);
    const bool isClosed = (status.st_mode & othersRights) == 0;
    // One that others may write into could be exchanged, and one of somebody else is no secret.
    if (status.st_uid != ::getuid() || !isClosed) throw FileError("use", path, EPERM);
    return folder;
}

OwnedFd openFolder(const SocketPlace& place) {
    auto folder = OwnedFd::open("open", place.root, O_RDONLY | O_DIRECTORY);
    auto path = place.root;
    std::string_view rest = place.folder;
    while (!rest.empty()) {
        const std::string name(rest.substr(0, rest.find('/')));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        path = paths::join(path, name);
        folder = step(folder.get(), name, path);
    }
    return folder;
}

/// Absent where somebody took it away meanwhile.
std::optional<OwnedFd> tryOpenFolder(const SocketPlace& place) {
    try {
        return openFolder(place);
    } catch (const FileError& error) {
        if (error.code != ENOENT) throw;
        return std::nullopt;
    }
}

/// Whether what stands at the place is this folder still: whoever had it may have ended.
bool isStillThere(const OwnedFd& folder, const Path& path) noexcept {
    struct stat opened {};
    struct stat found {};
    return ::fstat(folder.get(), &opened) == 0 && ::lstat(path.c_str(), &found) == 0 &&
           opened.st_dev == found.st_dev && opened.st_ino == found.st_ino;
}

sockaddr_un addressOf(const Path& path) {
    if (path.size() > longestSocketPath()) throw FileError("use", path, ENAMETOOLONG);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

/// Tells whoever is started by a program of the instance where the user's bus is. In one step, for
/// the socket may be known already.
void writeBus(const SocketPlace& place, const OwnedFd& folder) {
    const auto path = paths::join(place.folderPath(), busFile);
    const auto text = place.bus.text();
    ::unlinkat(folder.get(), newBusFile, 0);
    const OwnedFd file(::openat(folder.get(), newBusFile,
                                O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) throwFileError("write", path);
    const auto written =
        retryInterrupted([&] { return ::write(file.get(), text.data(), text.size()); });
    if (written != static_cast<ssize_t>(text.size())) throwFileError("write", path);
    if (::renameat(folder.get(), newBusFile, folder.get(), busFile) != 0) {
        throwFileError("write", path);
    }
}

OwnedFd newListening(const SocketPlace& place, const OwnedFd& folder) {
    const auto path = place.socketPath();
    const auto address = addressOf(path);
    for (const char* name : {socketFile, hiddenSocketFile}) ::unlinkat(folder.get(), name, 0);
    OwnedFd listening(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!listening) throwFileError("make", path);
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    if (::bind(listening.get(), generic, sizeof address) != 0) throwFileError("make", path);
    const bool listens = ::fchmodat(folder.get(), socketFile, 0600, 0) == 0 &&
                         ::listen(listening.get(), SOMAXCONN) == 0;
    if (!listens) throwFileError("make", path);
    return listening;
}

void limitWaiting(const OwnedFd& socket, std::chrono::milliseconds limit) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(limit);
    const auto rest = std::chrono::microseconds(limit - seconds);
    const timeval time{static_cast<time_t>(seconds.count()),
                       static_cast<suseconds_t>(rest.count())};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time);
    ::setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
}

bool isOursBehind(const OwnedFd& socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == ::getuid();
}

/// Whether nobody but this user can have written it.
bool isOursAlone(const OwnedFd& file, mode_t kind) {
    struct stat status {};
    return file && ::fstat(file.get(), &status) == 0 && (status.st_mode & S_IFMT) == kind &&
           status.st_uid == ::getuid() && (status.st_mode & othersRights) == 0;
}

std::optional<SocketLease> tryLease(const SocketPlace& place, std::chrono::milliseconds limit) {
    const auto address = addressOf(place.socketPath());
    OwnedFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket) throwFileError("use", place.socketPath());
    limitWaiting(socket, limit);
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    char answer = 0;
    const bool answers =
        retryInterrupted([&] { return ::connect(socket.get(), generic, sizeof address); }) == 0 &&
        isOursBehind(socket) &&
        retryInterrupted([&] { return ::send(socket.get(), &leaseByte, 1, MSG_NOSIGNAL); }) == 1 &&
        retryInterrupted([&] { return ::recv(socket.get(), &answer, 1, 0); }) == 1;
    if (!answers || answer != leaseByte) return std::nullopt;
    return SocketLease{std::move(socket)};
}

/// Whether this process has the folder now; else somebody else has.
bool tryLock(const OwnedFd& folder, const SocketPlace& place) {
    if (retryInterrupted([&] { return ::flock(folder.get(), LOCK_EX | LOCK_NB); }) == 0) {
        return true;
    }
    if (errno != EWOULDBLOCK) throwFileError("lock", place.folderPath());
    return false;
}

} // namespace

SocketPlace SocketPlace::of(std::string_view prefix, const BusAddress& bus,
                            const Environment& environment) {
    // However long the prefix is: the path is to fit.
    const auto name = stableHash(std::string(prefix) + " " + bus.text());
    const SocketPlace usual{valueOf(environment, "XDG_RUNTIME_DIR"), "korvane/bus/" + name, bus};
    if (isFolderOfOurs(usual.root) && fits(usual)) return usual;
    const auto folder = "korvane-" + std::to_string(::getuid()) + "/bus/" + name;
    const SocketPlace temporary{valueOf(environment, "TMPDIR"), folder, bus};
    if (temporary.root.starts_with('/') && fits(temporary)) return temporary;
    return {"/tmp", folder, bus};
}

ServedSocket::ServedSocket(SocketPlace place, OwnedFd folder)
    : place_(std::move(place)), path_(place_.folderPath()), folder_(std::move(folder)) {
    try {
        writeBus(place_, folder_);
        listening_ = newListening(place_, folder_);
    } catch (...) {
        remove();
        throw;
    }
}

std::optional<BusAddress> busBehind(const BusAddress& bus) {
    if (bus.kind != BusAddress::Kind::file || paths::lastComponent(bus.name) != socketFile) {
        return std::nullopt;
    }
    const Path path(paths::deletingLastComponent(bus.name));
    const OwnedFd folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!isOursAlone(folder, S_IFDIR)) return std::nullopt;
    const OwnedFd file(
        ::openat(folder.get(), busFile, O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (!isOursAlone(file, S_IFREG)) return std::nullopt;
    std::array<char, 1024> text{}; // a socket's path is short
    const auto size =
        retryInterrupted([&] { return ::read(file.get(), text.data(), text.size()); });
    if (size <= 0) return std::nullopt;
    return BusAddress::parse({text.data(), static_cast<std::size_t>(size)}, {});
}

void ServedSocket::hide() const noexcept {
    ::renameat(folder_.get(), socketFile, folder_.get(), hiddenSocketFile);
}

void ServedSocket::show() const noexcept {
    ::renameat(folder_.get(), hiddenSocketFile, folder_.get(), socketFile);
}

void ServedSocket::remove() const noexcept {
    for (const char* name : {socketFile, hiddenSocketFile, busFile, newBusFile}) {
        ::unlinkat(folder_.get(), name, 0);
    }
    // Before the lock goes, and only where it is ours still: whoever waits for it looks again.
    if (isStillThere(folder_, path_)) ::rmdir(path_.c_str());
}

SocketClaim claimSocket(const SocketPlace& place, const ClaimLimits& limits) {
    constexpr int pause = 5; // milliseconds
    const auto deadline = Clock::now() + limits.all;
    while (true) {
        auto folder = tryOpenFolder(place);
        if (folder && tryLock(*folder, place)) {
            if (isStillThere(*folder, place.folderPath()))
                return ServedSocket(place, std::move(*folder));
        } else if (folder) {
            if (auto lease = tryLease(place, limits.answer)) return std::move(*lease);
        }
        if (Clock::now() >= deadline) throw FileError("use", place.socketPath(), ETIMEDOUT);
        ::poll(nullptr, 0, pause);
    }
}

} // namespace korvane::runner::bus
