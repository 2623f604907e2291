#include "Support/TempDir.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace korvane::test {
namespace {

dev_t deviceOf(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) throw std::runtime_error("Cannot stat " + path);
    return info.st_dev;
}

/// Folders that a test has locked would otherwise stop the removal.
void unlockFolders(const fs::path& folder) {
    std::error_code ignored;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (const auto& entry : fs::directory_iterator(folder, ignored)) {
        if (!entry.is_symlink(ignored) && entry.is_directory(ignored)) unlockFolders(entry.path());
    }
}

} // namespace

TempDir::TempDir() : TempDir(fs::canonical(fs::temp_directory_path()).string()) {}

TempDir::TempDir(const std::string& base) {
    auto pattern = base + "/korvane-test.XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("Cannot make a temporary folder in " + base);
    }
    owned_ = fs::canonical(pattern).string();
    path_ = owned_ + "/box";
    fs::create_directory(path_);
    // Another user, under whom the tests of missing permission run, must get to it.
    for (const auto& folder : {owned_, path_}) {
        fs::permissions(folder, fs::perms(0755), fs::perm_options::replace);
    }
}

TempDir::~TempDir() {
    std::error_code error;
    unlockFolders(owned_);
    for (const auto& entry : fs::directory_iterator(owned_, error)) {
        FAST_CHECK_UNARY(entry.path().string() == path_); // nothing may be left beside it
    }
    fs::remove_all(owned_, error);
    FAST_CHECK_UNARY_FALSE(static_cast<bool>(error));
}

TempDir TempDir::onAnotherFileSystemThan(const TempDir& first) {
    for (const std::string base : {"/dev/shm", "/run", "/var/tmp", "."}) {
        std::error_code error;
        const auto folder = fs::canonical(base, error).string();
        if (!error && ::access(folder.c_str(), W_OK) == 0 &&
            deviceOf(folder) != deviceOf(first.path())) {
            return TempDir(folder);
        }
    }
    throw std::runtime_error("This test needs a second file system, such as /dev/shm.");
}

} // namespace korvane::test
