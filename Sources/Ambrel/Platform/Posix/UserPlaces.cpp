#include "Ambrel/Platform/UserPlaces.h"

#include "Ambrel/Platform/Posix/UserBaseFolders.h"

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace ambrel {

namespace {

constexpr std::size_t firstBuffer = 1024;
constexpr std::size_t largestBuffer = 1024 * 1024;

/// The home folder in the user database; `lookUp` is one of its re-entrant queries.
template <class LookUp> std::optional<Path> homeInDatabase(const LookUp& lookUp) {
    for (std::size_t size = firstBuffer; size <= largestBuffer; size *= 2) {
        std::vector<char> buffer(size);
        struct passwd entry {};
        struct passwd* found = nullptr;
        const int error = lookUp(&entry, buffer.data(), buffer.size(), &found);
        if (error == ERANGE) continue;
        if (found == nullptr || found->pw_dir == nullptr || *found->pw_dir == '\0') break;
        return Path(paths::withoutTrailingSlashes(found->pw_dir));
    }
    return std::nullopt;
}

std::optional<Path> homeOfAccount() {
    return homeInDatabase([](auto... rest) { return ::getpwuid_r(::getuid(), rest...); });
}

std::optional<Path> homeOf(const std::string& user) {
    return homeInDatabase([&user](auto... rest) { return ::getpwnam_r(user.c_str(), rest...); });
}

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

} // namespace

Path UserPlaces::expandingTilde(const Path& path) const {
    if (!path.starts_with('~')) return path;
    const auto slash = path.find('/');
    const auto name = path.substr(1, slash == Path::npos ? slash : slash - 1);
    const auto place = name.empty() ? std::optional(home) : homeOf(name);
    if (!place || place->empty()) return path;
    const auto rest = slash == Path::npos ? Path() : path.substr(slash);
    // "~/" is the home itself: with a slash at its end it would no longer compare equal to it.
    const bool homeItself = rest.find_first_not_of('/') == Path::npos;
    return homeItself ? *place : paths::join(*place, rest);
}

UserPlaces UserPlaces::ofThisProcess() {
    // The variables belong to another home then.
    if (const auto fixed = variable("CFFIXED_USER_HOME"); !fixed.empty()) return usual(fixed);
    const auto home = homeOfAccount();
    return withChosenBaseFolders(usual(home ? *home : variable("HOME")));
}

} // namespace ambrel
