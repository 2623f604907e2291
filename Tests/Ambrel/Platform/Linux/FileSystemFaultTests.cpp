#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Faults.h"
#include "Support/Programs.h"
#include "Support/Sweep.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <memory>
#include <sstream>
#include <sys/xattr.h>

using namespace ambrel;
using namespace korvane::test;
using faults::Failure;

namespace {

/// An instance with private copies of the shared folders, and a user who has some of the names.
struct Migration {
    explicit Migration(bool acrossFileSystems) {
        if (acrossFileSystems) {
            other.reset(new TempDir(TempDir::onAnotherFileSystemThan(tmp)));
        }
        instance = tmp / "instance";
        into = makeFolder(other ? *other / "user" : tmp / "user");
        writeFile(instance + "/Downloads/a.txt", "the instance's a");
        writeFile(instance + "/Downloads/.DS_Store");
        writeFile(instance + "/Downloads/tree/one", std::string(70000, '1'));
        writeFile(instance + "/Downloads/tree/deep/two", "two");
        makeLink(instance + "/Downloads/tree/link", "one");
        makeLink(instance + "/Downloads/link", "/nowhere");
        writeFile(instance + "/Documents/letter", "dear");
        setMode(instance + "/Documents/letter", 0640);
        ::setxattr((instance + "/Documents/letter").c_str(), "user.mark", "x", 1, 0);
        makeFolder(instance + "/Desktop");
        writeFile(into + "/Downloads/a.txt", "the user's a");
        writeFile(into + "/Downloads/old/file", "old");
        before = contentsBelow({instance, into});
        before.erase("file "); // the one of ".DS_Store"
    }

    void checkNoneLost() const { checkNothingLost(before, {instance, into}); }

    void checkNoRemains() const {
        checkOnlyNames(into, {"Downloads", "Documents", "Desktop"});
        checkOnlyNames(into + "/Downloads", {"a.txt", "a (1).txt", "old", "tree", "link"});
        checkOnlyNames(into + "/Documents", {"letter"});
        checkOnlyNames(into + "/Desktop", {});
        checkOnlyNames(instance, {"Downloads", "Documents", "Desktop"});
        checkOnlyNames(instance + "/Downloads", {"a.txt", ".DS_Store", "tree", "link"});
    }

    /// What one failure left undone, a second run without any does.
    void checkSecondRunFinishes() const {
        InstanceLauncher::migrateSharedUserFolders(instance, into);
        checkNothingLost(before, {into});
        for (const std::string name : {"/Downloads", "/Documents", "/Desktop"}) {
            if (isThere(into + name)) CHECK(isLink(instance + name));
        }
    }

    void run() const { InstanceLauncher::migrateSharedUserFolders(instance, into); }

    TempDir tmp;
    std::unique_ptr<TempDir> other;
    Path instance;
    Path into;
    std::multiset<std::string> before;
};

struct LocalMigration : Migration {
    LocalMigration() : Migration(false) {}
};
struct DistantMigration : Migration {
    DistantMigration() : Migration(true) {}
};

template <class Scene> void sweepMigration() {
    sweep<Scene>([](Scene& scene) { scene.run(); },
                 [](Scene& scene, const Failure& failure) {
                     scene.checkNoneLost();
                     // With one failure alone, cleaning up works.
                     if (!failure.lasting) scene.checkNoRemains();
                     if (!failure.lasting) scene.checkSecondRunFinishes();
                 });
}

/// Every kind of item where a link belongs.
struct Links {
    Links() {
        makeFolder(tmp / "target");
        writeFile(tmp / "target/file", "the target's");
        writeFile(tmp / "full/file", "the folder's");
        writeFile(tmp / "finder/.DS_Store", "settings");
        makeLink(tmp / "link", tmp / "elsewhere");
        writeFile(tmp / "elsewhere/file", "elsewhere");
        makeFolder(tmp / "empty");
        writeFile(tmp / "file", "the one intended loss");
        makeFolder(tmp / "own");
        makeLink(tmp / "alias", ".");
        before = contentsBelow({tmp.path()});
        before.erase("file the one intended loss");
    }

    void run() const {
        for (const auto* name : {"full", "finder", "link", "empty", "file", "missing/link"}) {
            InstanceLauncher::linkIfSafe(tmp / name, tmp / "target");
        }
        InstanceLauncher::linkIfSafe(tmp / "own", tmp / "own");
        InstanceLauncher::linkIfSafe(tmp / "alias/own", tmp / "own");
    }

    void check() const {
        checkNothingLost(before, {tmp.path()});
        CHECK(linkText(tmp / "link") == tmp / "elsewhere");
        CHECK(isRealFolder(tmp / "full"));
        CHECK(isRealFolder(tmp / "finder"));
        CHECK(isRealFolder(tmp / "own"));
        CHECK(readFile(tmp / "target/file") == "the target's");
        checkOnlyNames(tmp.path(), {"target", "full", "finder", "link", "elsewhere", "empty",
                                    "file", "own", "alias", "missing"});
    }

    TempDir tmp;
    std::multiset<std::string> before;
};

/// An instance whose home is the user's own.
struct OwnHome {
    OwnHome() : user(tmp) {
        writeFile(user / "Downloads/a.txt", "a");
        writeFile(user / "Downloads/.DS_Store", "settings");
        makeFolder(user / "Documents"); // empty: a link would replace it
        makeLink(tmp / "alias", user.path());
        before = snapshot(user.path());
    }

    TempDir tmp;
    UserHome user;
    std::multiset<std::string> before;
};

/// An instance with all links in place.
struct Removal {
    Removal() : user(tmp) {
        for (const std::string name : {"Downloads", "Documents", "Desktop", "Library/Keychains"}) {
            writeFile(user / name + "/sub/file", name);
        }
        const auto home = tmp / "instance";
        InstanceLauncher::ensureSharedUserFolders(home, user.places());
        InstanceLauncher::ensureKeychainAccess(home, user.places());
        writeFile(home + "/own/data");
        makeLink(tmp / "home", home);
        auto config = smallestConfig();
        config.instanceHome = home;
        bundle = writeWrapper(tmp / "A.app", config);
        record = {bundle, config};
        before = snapshot(user.path());
    }

    void run(const Path& home) const {
        auto changed = record;
        changed.config.instanceHome = home;
        try {
            InstanceRegistry(user.places()).remove(changed, UserData::remove);
        } catch (const FileError&) {
            // The bundle could not be removed: allowed, and then the data is untouched.
        }
    }

    TempDir tmp;
    UserHome user;
    Path bundle;
    InstanceRecord record;
    std::multiset<std::string> before;
};

/// One item to be moved to another file system, on its own.
struct DistantMove {
    DistantMove() : there(TempDir::onAnotherFileSystemThan(here)) {
        writeFile(here / "tree/one", std::string(100000, '1'));
        writeFile(here / "tree/deep/two", "two");
        makeLink(here / "tree/link", "one");
        before = contentsBelow({here.path()});
    }

    TempDir here;
    TempDir there;
    bool moved = false;
    std::multiset<std::string> before;
};

} // namespace

TEST_CASE("migration on one file system loses no file whichever call fails") {
    sweepMigration<LocalMigration>();
}

TEST_CASE(
    "migration across file systems loses no file and leaves no remains whichever call fails") {
    sweepMigration<DistantMigration>();
}

TEST_CASE("linking loses nothing but a plain file in its place whichever call fails") {
    sweep<Links>([](Links& scene) { scene.run(); },
                 [](Links& scene, const Failure&) { scene.check(); });
}

TEST_CASE("an instance whose home is the user's own is left alone whichever call fails") {
    sweep<OwnHome>(
        [](OwnHome& scene) {
            for (const auto& home : {scene.user.path(), scene.tmp / "alias"}) {
                InstanceLauncher::ensureSharedUserFolders(home, scene.user.places());
                InstanceLauncher::migrateSharedUserFolders(home, scene.user.places());
            }
        },
        [](OwnHome& scene, const Failure&) { CHECK(snapshot(scene.user.path()) == scene.before); });
}

TEST_CASE(
    "removing an instance with its data never touches the user's folders whichever call fails") {
    sweep<Removal>([](Removal& scene) { scene.run(scene.tmp / "instance"); },
                   [](Removal& scene, const Failure&) {
                       CHECK(snapshot(scene.user.path()) == scene.before);
                       if (isThere(scene.bundle)) CHECK(isThere(scene.tmp / "instance/own/data"));
                   });
    sweep<Removal>([](Removal& scene) { scene.run(scene.tmp / "home/"); },
                   [](Removal& scene, const Failure&) {
                       CHECK(snapshot(scene.user.path()) == scene.before);
                       CHECK(isThere(scene.tmp / "instance/own/data"));
                   });
}

TEST_CASE("a failed move across file systems leaves the source whole and no remains") {
    sweep<DistantMove>(
        [](DistantMove& scene) {
            try {
                fileSystem::move(scene.here / "tree", scene.there / "tree");
                scene.moved = true;
            } catch (const FileError&) {
                scene.moved = false;
            }
        },
        [](DistantMove& scene, const Failure& failure) {
            const bool copied = isThere(scene.there / "tree");
            checkNothingLost(scene.before, {scene.here.path(), scene.there.path()});
            if (copied) checkNothingLost(scene.before, {scene.there.path()});
            if (!copied) CHECK(contentsBelow({scene.here.path()}) == scene.before);
            if (!failure.lasting) checkOnlyNames(scene.there.path(), {"tree"});
            if (scene.moved) CHECK(copied);
        });
}

TEST_CASE("every file-system call that the library makes can be made to fail") {
    // What the C library offers for files, as far as it changes or reads them by name or number.
    const Strings known{"open",
                        "open64",
                        "openat",
                        "openat64",
                        "openat2",
                        "creat",
                        "creat64",
                        "fopen",
                        "fopen64",
                        "freopen",
                        "read",
                        "pread",
                        "pread64",
                        "readv",
                        "write",
                        "pwrite",
                        "pwrite64",
                        "writev",
                        "close",
                        "fclose",
                        "fsync",
                        "fdatasync",
                        "sync",
                        "syncfs",
                        "rename",
                        "renameat",
                        "renameat2",
                        "mkdir",
                        "mkdirat",
                        "unlink",
                        "unlinkat",
                        "remove",
                        "rmdir",
                        "symlink",
                        "symlinkat",
                        "link",
                        "linkat",
                        "stat",
                        "stat64",
                        "lstat",
                        "lstat64",
                        "fstat",
                        "fstat64",
                        "fstatat",
                        "fstatat64",
                        "statx",
                        "__xstat",
                        "__lxstat",
                        "__fxstat",
                        "__fxstatat",
                        "opendir",
                        "fdopendir",
                        "readdir",
                        "readdir64",
                        "closedir",
                        "scandir",
                        "copy_file_range",
                        "sendfile",
                        "sendfile64",
                        "splice",
                        "utimensat",
                        "futimens",
                        "utimes",
                        "chmod",
                        "fchmod",
                        "fchmodat",
                        "chown",
                        "lchown",
                        "fchown",
                        "fchownat",
                        "setxattr",
                        "lsetxattr",
                        "fsetxattr",
                        "getxattr",
                        "lgetxattr",
                        "fgetxattr",
                        "listxattr",
                        "llistxattr",
                        "flistxattr",
                        "mknod",
                        "mknodat",
                        "mkfifo",
                        "truncate",
                        "ftruncate",
                        "ftruncate64",
                        "readlink",
                        "readlinkat",
                        "realpath",
                        "getcwd",
                        "chdir",
                        "fchdir",
                        "access",
                        "faccessat",
                        "lseek",
                        "lseek64",
                        "fcntl",
                        "fcntl64",
                        "ioctl",
                        "mmap",
                        "mmap64",
                        "nftw",
                        "fts_open",
                        "mkstemp",
                        "mkostemp",
                        "mkdtemp",
                        "posix_fallocate",
                        "fallocate",
                        "syscall",
                        "__open_2",
                        "__openat_2",
                        "__read_chk",
                        "__readlink_chk",
                        "__readlinkat_chk",
                        "__realpath_chk",
                        "__getcwd_chk"};
    const auto wrapped = faults::wrappedCalls();
    const auto said = run({"nm", "-u", KORVANE_TEST_LIBRARY});
    REQUIRE(said.status == 0);
    std::istringstream symbols(said.output);
    int found = 0;
    for (std::string word; symbols >> word;) {
        if (std::find(known.begin(), known.end(), word) == known.end()) continue;
        ++found;
        CAPTURE(word);
        CHECK(std::find(wrapped.begin(), wrapped.end(), word) != wrapped.end());
    }
    CHECK(found > 20);
}
