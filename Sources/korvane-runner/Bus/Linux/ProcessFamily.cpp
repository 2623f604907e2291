#include "korvane-runner/Bus/Linux/ProcessFamily.h"

#include "Ambrel/Base/TextParts.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/Linux/ProcessFiles.h"
#include "Ambrel/Platform/Posix/Retry.h"

#include <array>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane::runner::bus {

namespace {

using namespace ambrel;
using namespace ambrel::processFiles;

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};

/// The words of "PID (NAME) STATE PARENT ..." behind the name, which may be anything.
std::vector<std::string_view> fieldsOf(std::string_view stat) {
    std::vector<std::string_view> fields;
    const auto end = stat.rfind(") ");
    if (end == std::string_view::npos) return fields;
    for (auto rest = stat.substr(end + 2); !rest.empty();) {
        fields.push_back(takeUntil(rest, ' '));
    }
    return fields;
}

/// What a file of /proc tells of a process.
std::string told(int process, const char* file) {
    const auto path = "/proc/" + std::to_string(process) + "/" + file;
    return contentOf(AT_FDCWD, path.c_str());
}

/// As wait(2) would tell it.
int waitStatusOf(const siginfo_t& info) {
    constexpr int dumped = 0x80;
    if (info.si_code == CLD_EXITED) return (info.si_status & 0xff) << 8;
    return info.si_status | (info.si_code == CLD_DUMPED ? dumped : 0);
}

} // namespace

std::optional<RunningProcess> runningProcess(int id) {
    constexpr std::size_t parent = 1;
    constexpr std::size_t start = 19;
    const auto stat = told(id, "stat");
    const auto fields = fieldsOf(stat);
    if (fields.size() <= start) return std::nullopt;
    const auto parentId = static_cast<int>(numberIn(fields[parent]).value_or(0));
    return RunningProcess{id, parentId, std::string(fields[start])};
}

std::vector<RunningProcess> runningProcesses() {
    std::vector<RunningProcess> processes;
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir("/proc"));
    if (!folder) return processes;
    while (const dirent* entry = ::readdir(folder.get())) {
        const auto id = numberIn(entry->d_name);
        if (!id) continue;
        auto process = runningProcess(static_cast<int>(*id));
        if (process) processes.push_back(std::move(*process));
    }
    return processes;
}

// The kernel can tell of children alone, but not every kernel is built so.
std::vector<int> childrenOfThisProcess() {
    std::vector<int> children;
    const int self = ::getpid();
    for (const auto& process : runningProcesses()) {
        if (process.parent == self) children.push_back(process.id);
    }
    return children;
}

bool hasChildren() noexcept {
    siginfo_t info{};
    return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

std::optional<EndedChild> nextEndedChild() noexcept {
    siginfo_t info{};
    const int result =
        retryInterrupted([&] { return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT); });
    if (result != 0 || info.si_pid == 0) return std::nullopt;
    return EndedChild{info.si_pid, waitStatusOf(info)};
}

std::optional<Path> programOf(int process) {
    std::array<char, 4096> target{};
    const auto size = ::readlink(("/proc/" + std::to_string(process) + "/exe").c_str(),
                                 target.data(), target.size());
    if (size <= 0) return std::nullopt;
    return Path(target.data(), static_cast<std::size_t>(size));
}

bool isOfOtherInstance(int process) {
    const auto program = programOf(process);
    if (!program || program == programOf(::getpid())) return false;
    return paths::lastComponent(*program) == BundleLayout::runnerFileName &&
           paths::deletingLastComponent(*program).ends_with("/Contents/MacOS");
}

std::optional<std::string> startVariableOf(int process, std::string_view name) {
    return variableIn(told(process, "environ"), name);
}

} // namespace korvane::runner::bus
