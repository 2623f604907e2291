#include "Support/Faults.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

extern "C" ssize_t __real_readlink(const char* path, char* place, size_t size);

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

bool isElsewhere(const char* path) {
    const auto& within = state.failure.within;
    if (path == nullptr || *path != '/') return false; // as are those relative to a folder
    if (::strncmp(path, within.c_str(), within.size()) != 0) return true;
    return path[within.size()] != '/' && path[within.size()] != '\0';
}

bool isElsewhere(int descriptor) {
    const int error = errno; // which may tell how the last call ended
    const auto link = "/proc/self/fd/" + std::to_string(descriptor);
    std::array<char, PATH_MAX + 1> place{};
    const auto size = __real_readlink(link.c_str(), place.data(), PATH_MAX);
    errno = error;
    return size > 0 && isElsewhere(place.data());
}

bool isElsewhere(DIR* folder) { return isElsewhere(::dirfd(folder)); }

bool isElsewhere(int folder, const char* path) {
    return path != nullptr && *path == '/' ? isElsewhere(path) : isElsewhere(folder);
}

// The overloads tell by its arguments which file a call is about.
bool isSpared() { return state.armed && !state.failure.within.empty(); }
template <class First, class... Rest> bool isSpared(First first, Rest...) {
    return isSpared() && isElsewhere(first);
}
template <class... Rest> bool isSpared(int folder, const char* path, Rest...) {
    return isSpared() && isElsewhere(folder, path);
}
bool isSpared(const char* from, const char* to) {
    return isSpared() && isElsewhere(from) && isElsewhere(to);
}
bool isSpared(const char* /*target*/, int folder, const char* link) {
    return isSpared() && isElsewhere(folder, link);
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

void arm(long failing, const Failure& failure) { state = {true, failing, failure, 0, "", false}; }

void armKill(long last, const std::string& within) {
    state = {true, last, {.code = 0, .lasting = false, .within = within}, 0, "", true};
}

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
        if (!isSpared(path) && mustFail(#name)) return -1;                                         \
        return __real_##name(path, flags, mode);                                                   \
    }
#define WRAP_OPENAT(name)                                                                          \
    int __real_##name(int folder, const char* path, int flags, ...);                               \
    int __wrap_##name(int folder, const char* path, int flags, ...) {                              \
        std::va_list rest;                                                                         \
        va_start(rest, flags);                                                                     \
        const auto mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, unsigned) : 0U;      \
        va_end(rest);                                                                              \
        if (!isSpared(folder, path) && mustFail(#name)) return -1;                                 \
        return __real_##name(folder, path, flags, mode);                                           \
    }
#define WRAP_FCNTL(name)                                                                           \
    int __real_##name(int fd, int command, ...);                                                   \
    int __wrap_##name(int fd, int command, ...) {                                                  \
        std::va_list rest;                                                                         \
        va_start(rest, command);                                                                   \
        const long argument = va_arg(rest, long);                                                  \
        va_end(rest);                                                                              \
        if (!isSpared(fd) && mustFail(#name)) return -1;                                           \
        return __real_##name(fd, command, argument);                                               \
    }
// A descriptor is gone even when closing it reports a failure.
#define WRAP_RELEASE(type, name)                                                                   \
    int __real_##name(type handle);                                                                \
    int __wrap_##name(type handle) {                                                               \
        const bool isFailing = !isSpared(handle) && mustFail(#name);                               \
        const int error = errno;                                                                   \
        const int result = __real_##name(handle);                                                  \
        if (isFailing) errno = error;                                                              \
        return isFailing ? -1 : result;                                                            \
    }
#include "Support/WrappedCalls.def"
}
