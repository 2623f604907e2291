#include "Ambrel/Platform/DetachedProcess.h"

#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/Environ.h"
#include "Ambrel/Platform/Posix/Spawn.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace ambrel {

namespace {

void setStreams(posix_spawn_file_actions_t& actions,
                const std::shared_ptr<const OwnedFd>& standardError) {
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    if (standardError) {
        posix_spawn_file_actions_adddup2(&actions, standardError->get(), STDERR_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    }
}

void setFreshStart(posix_spawnattr_t& attributes) {
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

} // namespace

void launchDetached(const Path& executable, const std::shared_ptr<const OwnedFd>& standardError,
                    const std::vector<std::string>& arguments) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    setStreams(actions, standardError);
    setFreshStart(attributes);
    std::vector<std::string> words{executable};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (auto& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    pid_t process = 0;
    int code = keepOnlyStandardStreams(actions, attributes);
    if (code == 0) {
        code = posix_spawn(&process, executable.c_str(), &actions, &attributes, pointers.data(),
                           environ);
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (code == 0) return;
    throw ChildProcessError(ChildProcessError::Fault::executable, executable, errorReason(code));
}

} // namespace ambrel
