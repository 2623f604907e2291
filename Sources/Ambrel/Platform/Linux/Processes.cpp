#include "Ambrel/Platform/Processes.h"

#include "Ambrel/Platform/Linux/ProcessFiles.h"
#include "Ambrel/Platform/Posix/PollUntil.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

// The header of glibc 2.36 does not say that its functions are C.
extern "C" {
#include <sys/pidfd.h>
}

namespace ambrel {

namespace {

using namespace processFiles;

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

/// The value of "NAME:\tVALUE" in the status of a process. No name can fake a line: there the
/// kernel escapes it.
std::string_view fieldOf(std::string_view status, std::string_view name) {
    const auto start = status.find("\n" + std::string(name) + ":\t");
    if (start == std::string_view::npos) return {};
    const auto rest = status.substr(start + name.size() + 3);
    return rest.substr(0, rest.find('\n'));
}

/// A process whose first thread has ended looks like one that has ended, but has others.
bool hasEnded(std::string_view status) {
    const auto state = fieldOf(status, "State");
    if (state.starts_with('X')) return true;
    return state.starts_with('Z') && numberIn(fieldOf(status, "Threads")).value_or(0) <= 1;
}

FileIdentity identityOf(const struct stat& status) {
    return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

std::optional<HeldFile> heldFile(int folder, const char* link) {
    struct stat status {};
    if (::fstatat(folder, link, &status, 0) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    std::array<char, 4096> place{};
    const auto size = ::readlinkat(folder, link, place.data(), place.size());
    if (size < 0) return std::nullopt;
    constexpr std::string_view mark = " (deleted)";
    HeldFile file{identityOf(status), Path(place.data(), static_cast<std::size_t>(size)), false};
    // A file may be called so; one that stands somewhere has links.
    if (status.st_nlink == 0 && file.path.ends_with(mark)) {
        file.path.resize(file.path.size() - mark.size());
        file.isRemoved = true;
    }
    return file;
}

std::optional<ProcessSeen> look(int processes, const char* name) {
    const OwnedFd folder(::openat(processes, name, O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder) return std::nullopt;
    const auto status = contentOf(folder.get(), "status");
    const auto parent = numberIn(fieldOf(status, "PPid"));
    if (!parent || hasEnded(status)) return std::nullopt;
    ProcessSeen seen;
    seen.id = static_cast<int>(numberIn(name).value_or(0));
    seen.parent = static_cast<int>(*parent);
    seen.isUsers = numberIn(fieldOf(status, "Uid")) == static_cast<long>(::getuid());
    if (!seen.isUsers) return seen;
    seen.executable = heldFile(folder.get(), "exe");
    seen.output = heldFile(folder.get(), "fd/1");
    seen.error = heldFile(folder.get(), "fd/2");
    const auto environment = contentOf(folder.get(), "environ");
    seen.home = variableIn(environment, "HOME");
    seen.isStartedByBus = variableIn(environment, "DBUS_STARTER_BUS_TYPE") == "session";
    return seen;
}

std::vector<ProcessSeen> lookAtAll() {
    std::vector<ProcessSeen> found;
    const OpenFolder folder(::opendir("/proc"));
    if (!folder) return found;
    while (const dirent* entry = ::readdir(folder.get())) {
        if (entry->d_name[0] < '1' || entry->d_name[0] > '9') continue;
        if (auto seen = look(::dirfd(folder.get()), entry->d_name)) {
            found.push_back(std::move(*seen));
        }
    }
    std::ranges::sort(found, {}, &ProcessSeen::id);
    return found;
}

} // namespace

std::optional<FileIdentity> FileIdentity::at(const Path& path) noexcept {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return identityOf(status);
}

std::optional<FileIdentity> FileIdentity::ofFileAt(const Path& path) noexcept {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return identityOf(status);
}

bool HeldFile::isOrWas(const Path& place, const std::optional<FileIdentity>& now) const {
    return identity == now || (isRemoved && path == place);
}

std::vector<ProcessSeen> runningProcesses() noexcept {
    try {
        return lookAtAll();
    } catch (const std::exception&) {
        return {}; // no memory for a list: the next thing that is tried tells
    }
}

int ownProcessId() noexcept { return ::getpid(); }

std::optional<ProcessHandle> ProcessHandle::open(int id) noexcept {
    OwnedFd fd(::pidfd_open(id, 0));
    if (!fd) return std::nullopt;
    return ProcessHandle(id, std::move(fd));
}

bool ProcessHandle::hasEnded() const noexcept {
    pollfd source{fd_.get(), POLLIN, 0};
    return pollUntil(&source, 1, Clock::now()) > 0;
}

bool ProcessHandle::requestEnd() const noexcept {
    return ::pidfd_send_signal(fd_.get(), SIGTERM, nullptr, 0) == 0;
}

bool ProcessHandle::waitForAny(const std::vector<ProcessHandle>& processes,
                               Clock::time_point deadline) {
    std::vector<pollfd> sources;
    sources.reserve(processes.size());
    for (const auto& process : processes) sources.push_back({process.fd_.get(), POLLIN, 0});
    return pollUntil(sources.data(), sources.size(), deadline) > 0;
}

} // namespace ambrel
