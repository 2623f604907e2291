#include "Support/RichTree.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Support/Expect.h"

#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace korvane::test {

using ambrel::fileSystem::ItemKind;

namespace {

void setTimes(const Path& path, long seconds, long nanoseconds) {
    const std::array<timespec, 2> times{{{seconds, nanoseconds}, {seconds, nanoseconds}}};
    REQUIRE(::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) == 0);
}

std::string attribute(const Path& path, const char* name) {
    std::array<char, 64> value{};
    const auto size = ::getxattr(path.c_str(), name, value.data(), value.size());
    return size < 0 ? std::string("none")
                    : std::string(value.data(), static_cast<std::size_t>(size));
}

} // namespace

// Times are set last.
void makeRichTree(const Path& top) {
    writeFile(top + "/plain.txt", "plain");
    writeFile(top + "/locked.txt", "locked");
    writeFile(top + "/sub/deep/file\n\xff.bin", std::string("a\0b", 3));
    writeFile(top + "/sub/empty");
    makeFolder(top + "/hollow");
    makeLink(top + "/dangling", "/nowhere/at all");
    makeLink(top + "/to-folder", "sub");
    REQUIRE(::mkfifo((top + "/pipe").c_str(), 0640) == 0);
    REQUIRE(::setxattr((top + "/plain.txt").c_str(), "user.colour", "red", 3, 0) == 0);
    REQUIRE(::setxattr((top + "/sub").c_str(), "user.kind", "folder", 6, 0) == 0);
    setMode(top + "/plain.txt", 0751);
    setMode(top + "/locked.txt", 0400);
    setMode(top + "/hollow", 02770);
    setMode(top + "/sub/deep", 0555);
    for (const auto* name :
         {"/plain.txt", "/locked.txt", "/sub/deep", "/sub", "/hollow", "/dangling", "/pipe", ""}) {
        setTimes(top + name, 1000000000, 123456789);
    }
}

void checkRichTree(const Path& top) {
    CHECK(readFile(top + "/plain.txt") == "plain");
    CHECK(readFile(top + "/sub/deep/file\n\xff.bin") == std::string("a\0b", 3));
    CHECK(readFile(top + "/sub/empty").empty());
    CHECK(isRealFolder(top + "/hollow"));
    CHECK(linkText(top + "/dangling") == "/nowhere/at all");
    CHECK(linkText(top + "/to-folder") == "sub");
    CHECK(S_ISFIFO(statusOf(top + "/pipe").st_mode));
    CHECK(attribute(top + "/plain.txt", "user.colour") == "red");
    CHECK(attribute(top + "/sub", "user.kind") == "folder");
    CHECK(modeOf(top + "/plain.txt") == 0751);
    CHECK(modeOf(top + "/locked.txt") == 0400);
    CHECK(modeOf(top + "/hollow") == 02770);
    CHECK(modeOf(top + "/sub/deep") == 0555);
    CHECK(modeOf(top + "/pipe") == 0640);
    for (const auto* name :
         {"/plain.txt", "/locked.txt", "/sub/deep", "/sub", "/hollow", "/dangling", "/pipe", ""}) {
        CAPTURE(name);
        CHECK(statusOf(top + name).st_mtim.tv_sec == 1000000000);
        CHECK(statusOf(top + name).st_mtim.tv_nsec == 123456789);
    }
}

} // namespace korvane::test
