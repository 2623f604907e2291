#include "Ambrel/Platform/ChildProcess.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Posix/Environ.h"
#include "Ambrel/Platform/Posix/PathBytes.h"
#include "Ambrel/Platform/Posix/ProcessEnd.h"
#include "Ambrel/Platform/Posix/Retry.h"
#include "Ambrel/Platform/Posix/Spawn.h"
#include "Ambrel/Platform/Posix/WaitStatus.h"

#include <csignal>
#include <mutex>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace ambrel {

namespace {

std::string sentence(ChildProcessError::Fault fault, const Path& path, const std::string& reason) {
    const std::string start = fault == ChildProcessError::Fault::workingDirectory
                                  ? "Cannot use the working directory "
                                  : "Cannot start ";
    return utf8::oneLine(start + path + ": " + reason);
}

/// The file actions and attributes of one spawn.
class SpawnPlan {
public:
    SpawnPlan() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;
    ~SpawnPlan() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }

    void useStream(const std::shared_ptr<const OwnedFd>& source, int stream) {
        if (source) check(posix_spawn_file_actions_adddup2(&actions_, source->get(), stream));
    }

    void useFolder(const std::optional<Path>& folder) {
        if (folder) check(posix_spawn_file_actions_addchdir_np(&actions_, folder->c_str()));
    }

    void resetSignals(bool ownSession) {
        sigset_t defaults;
        sigset_t mask;
        sigfillset(&defaults);
        sigemptyset(&mask);
        struct sigaction hangUp {};
        sigaction(SIGHUP, nullptr, &hangUp);
        // "nohup" reaches through to the program.
        if (hangUp.sa_handler == SIG_IGN && !ownSession) sigdelset(&defaults, SIGHUP);
        check(posix_spawnattr_setsigdefault(&attributes_, &defaults));
        check(posix_spawnattr_setsigmask(&attributes_, &mask));
        const int session = ownSession ? POSIX_SPAWN_SETSID : 0;
        const int flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | session;
        check(posix_spawnattr_setflags(&attributes_, static_cast<short>(flags)));
        check(keepOnlyStandardStreams(actions_, attributes_));
    }

    /// 0, or the error number of the first step that failed.
    int spawn(pid_t& pid, const Path& executable, char* const* arguments,
              char* const* environment) {
        if (error_ != 0) return error_;
        return posix_spawn(&pid, executable.c_str(), &actions_, &attributes_, arguments,
                           environment);
    }

private:
    void check(int error) {
        if (error_ == 0) error_ = error;
    }

    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
    int error_ = 0;
};

/// A null-terminated list of C strings that point into `texts`.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> assignments(const Environment& environment) {
    std::vector<std::string> result;
    result.reserve(environment.size());
    for (const auto& [name, value] : environment) result.push_back(name + "=" + value);
    return result;
}

/// A NUL byte would cut the text short without a word.
void requireNoNul(const std::vector<std::string>& texts, const char* what, const Path& executable) {
    for (const auto& text : texts) {
        if (text.find('\0') == std::string::npos) continue;
        throw ChildProcessError(ChildProcessError::Fault::arguments, executable,
                                std::string(what) + " holds a NUL byte");
    }
}

/// Why the working directory cannot be used, or 0.
int folderError(const std::optional<Path>& folder) {
    if (!folder) return 0;
    if (!fileSystem::exists(*folder)) return errno;
    if (!fileSystem::isFolder(*folder)) return ENOTDIR;
    return ::access(folder->c_str(), X_OK) == 0 ? 0 : errno;
}

/// The system tells one number for several causes; which it was is looked at afterwards.
ChildProcessError failure(const ChildProcess::Setup& setup, const Path& executable, int error) {
    using Fault = ChildProcessError::Fault;
    if (const int reason = folderError(setup.currentDirectory)) {
        return {Fault::workingDirectory, *setup.currentDirectory, errorReason(reason)};
    }
    if (fileSystem::isFolder(executable))
        return {Fault::executable, executable, errorReason(EISDIR)};
    if (error == ENOENT && fileSystem::exists(executable)) {
        return {Fault::executable, executable,
                "the interpreter or loader that it names is missing"};
    }
    return {error == E2BIG ? Fault::arguments : Fault::executable, executable, errorReason(error)};
}

} // namespace

ChildProcessError::ChildProcessError(Fault theFault, const Path& thePath, std::string theReason)
    : std::runtime_error(sentence(theFault, thePath, theReason)), fault(theFault), path(thePath),
      reason(std::move(theReason)) {}

/// What the object and the thread that watches for the termination handler share.
struct ChildProcess::State {
    pid_t pid = -1;
    mutable std::mutex mutex; ///< the id is given back, by reaping, only under this
    std::optional<int> status;
    sigset_t waitingAtLaunch{}; ///< blocked signals that had come before the program was there

    /// Reaps the ended process, which must be the case, unless that has happened.
    int collect() {
        const std::lock_guard lock(mutex);
        if (!status) tryReap(0);
        return status.value_or(lostStatus);
    }

    bool hasEnded() {
        const std::lock_guard lock(mutex);
        if (!status) tryReap(WNOHANG);
        return status.has_value();
    }

    void tryReap(int options) {
        int word = 0;
        const auto reaped = retryInterrupted([&] { return ::waitpid(pid, &word, options); });
        if (reaped == pid) status = terminationStatusOf(word);
        if (reaped == -1) status = lostStatus;
    }

    /// Blocks until the process has ended, without reaping it.
    void awaitEnd() const {
        siginfo_t info{};
        const auto id = static_cast<id_t>(pid);
        retryInterrupted([&] { return ::waitid(P_PID, id, &info, WEXITED | WNOWAIT); });
    }
};

ChildProcess::ChildProcess(Setup setup)
    : setup_(std::move(setup)), state_(std::make_shared<State>()) {}
ChildProcess::ChildProcess(ChildProcess&&) noexcept = default;
ChildProcess& ChildProcess::operator=(ChildProcess&&) noexcept = default;
ChildProcess::~ChildProcess() = default;

void ChildProcess::setTerminationHandler(TerminationHandler handler) {
    handler_ = std::move(handler);
}

void ChildProcess::launch() {
    const Path executable = fileSystem::absolute(setup_.executable);
    std::vector<std::string> arguments{setup_.processName.value_or(executable)};
    arguments.insert(arguments.end(), setup_.arguments.begin(), setup_.arguments.end());
    auto environment = assignments(setup_.environment.value_or(Environment()));
    requireNoNul(arguments, "an argument", executable);
    requireNoNul(environment, "an environment variable", executable);
    requireNoNul({setup_.currentDirectory.value_or(Path())}, "the working directory", executable);

    SpawnPlan plan;
    plan.useStream(setup_.standardInput, STDIN_FILENO);
    plan.useStream(setup_.standardOutput, STDOUT_FILENO);
    plan.useStream(setup_.standardError, STDERR_FILENO);
    plan.useFolder(setup_.currentDirectory);
    plan.resetSignals(setup_.ownSession);
    const auto argv = pointersTo(arguments);
    const auto envp = pointersTo(environment);
    pid_t pid = -1;
    sigpending(&state_->waitingAtLaunch);
    const int error =
        plan.spawn(pid, executable, argv.data(), setup_.environment ? envp.data() : environ);
    if (error != 0) throw failure(setup_, executable, error);
    state_->pid = pid;
    if (handler_) watch();
}

void ChildProcess::watch() {
    std::thread([state = state_, handler = handler_] {
        state->awaitEnd();
        handler(state->collect());
    }).detach();
}

bool ChildProcess::missed(int signal) const noexcept {
    return sigismember(&state_->waitingAtLaunch, signal) == 1;
}

void ChildProcess::waitUntilExit() {
    if (!isRunning()) return;
    state_->awaitEnd();
    state_->collect();
}

int ChildProcess::terminationStatus() const {
    return state_->pid > 0 ? state_->collect() : lostStatus;
}

bool ChildProcess::isRunning() const { return state_->pid > 0 && !state_->hasEnded(); }

void ChildProcess::sendSignal(int signal) const noexcept {
    const std::lock_guard lock(state_->mutex);
    // A process that ended but was not reaped still holds its id.
    if (state_->pid > 0 && !state_->status) ::kill(state_->pid, signal);
}

int ChildProcess::processIdentifier() const { return state_->pid; }

OwnedFd ChildProcess::openEnd() const {
    return isRunning() ? openProcessEnd(state_->pid) : openPastEnd();
}

} // namespace ambrel
