#include "Support/Faults.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <set>
#include <string_view>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

// Reached from C functions without an argument to carry it.
struct State {
    bool armed = false;
    long failing = 0;
    korvane::test::faults::Failure failure{};
    long calls = 0;
    const char* failedCall = "";
    bool kills = false;
} state;

/// What a call is about, by its first argument: of files that tell of processes the descriptors are
/// remembered for as long as they are open.
std::set<int> processFiles; // NOLINT: filled while armed alone

bool isAboutProcesses(const char* path) {
    return std::string_view(path == nullptr ? "" : path).starts_with("/proc");
}
bool isAboutProcesses(int descriptor) { return processFiles.contains(descriptor); }
bool isAboutProcesses(DIR* folder) { return isAboutProcesses(::dirfd(folder)); }

template <class First, class... Rest> bool isSpared(First first, Rest...) {
    return state.armed && state.failure.sparesProcesses && isAboutProcesses(first);
}

void forget(int descriptor) { processFiles.erase(descriptor); }
void forget(DIR* folder) { forget(::dirfd(folder)); }

int remembering(int descriptor) {
    if (descriptor >= 0) processFiles.insert(descriptor);
    return descriptor;
}

bool mustFail(const char* name) {
    if (!state.armed) return false;
    ++state.calls;
    const bool fails =
        state.calls == state.failing || (state.failure.lasting && state.calls > state.failing);
    if (!fails) return false;
    if (state.kills) ::raise(SIGKILL);
    if (*state.failedCall == '\0') state.failedCall = name;
    errno = state.failure.code;
    return true;
}

} // namespace

namespace korvane::test::faults {

void arm(long failing, const Failure& failure) {
    processFiles.clear();
    state = {true, failing, failure, 0, "", false};
}

void armKill(long last) { state = {true, last, {}, 0, "", true}; }

Outcome disarm() {
    state.armed = false;
    return {state.calls, state.failedCall};
}

std::vector<std::string> wrappedCalls() {
    return {
#define WRAP(result, name, parameters, arguments, failure) #name,
#define WRAP_OPEN(name) #name,
#define WRAP_OPENAT(name) #name,
#define WRAP_FCNTL(name) #name,
#define WRAP_RELEASE(type, name) #name,
#include "Support/WrappedCalls.def"
#undef WRAP
#undef WRAP_OPEN
#undef WRAP_OPENAT
#undef WRAP_FCNTL
#undef WRAP_RELEASE
    };
}

} // namespace korvane::test::faults

extern "C" {

#define WRAP(result, name, parameters, arguments, failure)                                         \
    result __real_##name parameters;                                                               \
    result __wrap_##name parameters {                                                              \
        if (!isSpared arguments && mustFail(#name)) return failure;                                \
        return __real_##name arguments;                                                            \
    }
#define WRAP_OPEN(name)                                                                            \
    int __real_##name(const char* path, int flags, ...);                                           \
    int __wrap_##name(const char* path, int flags, ...) {                                          \
        std::va_list rest;                                                                         \
        va_start(rest, flags);                                                                     \
        const auto mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, unsigned) : 0U;      \
        va_end(rest);                                                                              \
        if (isSpared(path)) return remembering(__real_##name(path, flags, mode));                  \
        return mustFail(#name) ? -1 : __real_##name(path, flags, mode);                            \
    }
#define WRAP_OPENAT(name)                                                                          \
    int __real_##name(int folder, const char* path, int flags, ...);                               \
    int __wrap_##name(int folder, const char* path, int flags, ...) {                              \
        std::va_list rest;                                                                         \
        va_start(rest, flags);                                                                     \
        const auto mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, unsigned) : 0U;      \
        va_end(rest);                                                                              \
        if (isSpared(folder) || isSpared(path))                                                    \
            return remembering(__real_##name(folder, path, flags, mode));                          \
        return mustFail(#name) ? -1 : __real_##name(folder, path, flags, mode);                    \
    }
#define WRAP_FCNTL(name)                                                                           \
    int __real_##name(int fd, int command, ...);                                                   \
    int __wrap_##name(int fd, int command, ...) {                                                  \
        std::va_list rest;                                                                         \
        va_start(rest, command);                                                                   \
        const long argument = va_arg(rest, long);                                                  \
        va_end(rest);                                                                              \
        if (isSpared(fd)) return __real_##name(fd, command, argument);                             \
        return mustFail(#name) ? -1 : __real_##name(fd, command, argument);                        \
    }
// A descriptor is gone even when closing it reports a failure.
#define WRAP_RELEASE(type, name)                                                                   \
    int __real_##name(type handle);                                                                \
    int __wrap_##name(type handle) {                                                               \
        const bool isSparedHere = isSpared(handle);                                                \
        if (isSparedHere) forget(handle);                                                          \
        const int result = __real_##name(handle);                                                  \
        return !isSparedHere && mustFail(#name) ? -1 : result;                                     \
    }
#include "Support/WrappedCalls.def"
}
