#include "korvane-runner/Bus/Linux/ServiceFolders.h"

#include "Support/Files.h"
#include "Support/TempDir.h"
#include "Support/Waiting.h"

#include <array>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

void addService(const Path& data, const std::string& file, const std::string& name,
                const std::string& command) {
    std::filesystem::create_directories(std::string(data) + "/dbus-1/services");
    writeFile(data + "/dbus-1/services/" + file,
              "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
}

} // namespace

TEST_CASE("services are looked for in the session's folders, those of the instance first") {
    const ServiceFolders all({.runtimeFolder = "/run/user/7",
                              .instanceData = "/home/i/.local/share",
                              .userData = "/home/u/.local/share",
                              .dataFolders = "/opt/share:relative::/usr/share:/opt/share"});
    CHECK(all.folders() ==
          std::vector<Path>{"/run/user/7/dbus-1/services", "/home/i/.local/share/dbus-1/services",
                            "/home/u/.local/share/dbus-1/services", "/opt/share/dbus-1/services",
                            "/usr/share/dbus-1/services"});
    const ServiceFolders usual({.runtimeFolder = {}, .instanceData = {}, .userData = {}});
    CHECK(usual.folders() ==
          std::vector<Path>{"/usr/local/share/dbus-1/services", "/usr/share/dbus-1/services"});
}

TEST_CASE("of services with one name that of the first folder is meant") {
    const TempDir tmp;
    addService(tmp / "one", "x.service", "org.example.Both", "/bin/one");
    addService(tmp / "one", "x.txt", "org.example.NoService", "/bin/one");
    addService(tmp / "two", "a.service", "org.example.Both", "/bin/two");
    addService(tmp / "two", "b.service", "org.example.Second", "/bin/two");
    writeFile(tmp / "two/dbus-1/services/c.service", "nonsense");
    std::filesystem::create_directory(std::string(tmp / "two/dbus-1/services/d.service"));
    ServiceFolders folders({.runtimeFolder = tmp / "missing",
                            .instanceData = tmp / "one",
                            .userData = tmp / "two",
                            .dataFolders = tmp / "none"});

    const auto table = folders.read();

    CHECK(table.names() == std::vector<std::string>{"org.example.Both", "org.example.Second"});
    CHECK(table.find("org.example.Both")->command == std::vector<std::string>{"/bin/one"});
}

TEST_CASE("what is no file, or longer than a service's may be, is passed over") {
    const TempDir tmp;
    const auto folder = tmp / "one/dbus-1/services";
    addService(tmp / "one", "x.service", "org.example.X", "/bin/x");
    makeFifo(folder + "/pipe.service");
    std::filesystem::create_symlink("/dev/zero", std::string(folder + "/zero.service"));
    addService(tmp / "one", "longest.service", "org.example.Longest", "/bin/x");
    addService(tmp / "one", "long.service", "org.example.Long", "/bin/x");
    constexpr std::size_t mebibyte = 1024 * 1024;
    for (const auto& [name, size] : {std::pair{"longest", mebibyte}, {"long", mebibyte + 1}}) {
        const auto file = folder + "/" + name + ".service";
        auto text = readFile(file);
        writeFile(file, text + "#" + std::string(size - text.size() - 1, 'x'));
    }
    ServiceFolders folders({.runtimeFolder = {},
                            .instanceData = tmp / "one",
                            .userData = {},
                            .dataFolders = tmp / "none"});

    CHECK(folders.read().names() ==
          std::vector<std::string>{"org.example.Longest", "org.example.X"});
}

TEST_CASE("who writes much into one folder takes nothing but what lies in it") {
    const TempDir tmp;
    for (const char name : std::string("abcde")) {
        const auto file = std::string(1, name) + ".service";
        addService(tmp / "one", file, "org.example." + std::string(1, name), "/bin/x");
        const auto path = tmp / "one/dbus-1/services/" + file;
        writeFile(path, readFile(path) + "#" + std::string(1000 * 1024, 'x'));
    }
    for (int i = 0; i < 4097; ++i) {
        const auto number = std::to_string(10'000 + i);
        addService(tmp / "two", number + ".service", "org.example.n" + number, "/bin/x");
    }
    addService(tmp / "three", "x.service", "org.example.X", "/bin/x");
    ServiceFolders folders({.runtimeFolder = tmp / "one",
                            .instanceData = tmp / "two",
                            .userData = tmp / "three",
                            .dataFolders = tmp / "none"});

    const auto table = folders.read();

    CHECK(table.find("org.example.d") != nullptr);
    CHECK(table.find("org.example.e") == nullptr); // behind 4 MiB
    CHECK(table.find("org.example.n14095") != nullptr);
    CHECK(table.find("org.example.n14096") == nullptr); // behind 4,096 files
    CHECK(table.find("org.example.X") != nullptr);
}

TEST_CASE("folders have changed when files, or they themselves, have come or gone") {
    const TempDir tmp;
    addService(tmp / "one", "x.service", "org.example.X", "/bin/x");
    const auto folder = tmp / "one/dbus-1/services";
    // Long ago, since two changes may fall into one tick of the system's clock.
    const auto longAgo = [&] {
        const std::array<timespec, 2> times{};
        REQUIRE(::utimensat(AT_FDCWD, folder.c_str(), times.data(), 0) == 0);
    };
    longAgo();
    ServiceFolders folders({.runtimeFolder = {},
                            .instanceData = tmp / "one",
                            .userData = tmp / "two",
                            .dataFolders = tmp / "none"});
    CHECK(folders.haveChanged());
    folders.read();
    CHECK_FALSE(folders.haveChanged());

    addService(tmp / "one", "y.service", "org.example.Y", "/bin/y");
    CHECK(folders.haveChanged());
    longAgo();
    CHECK(folders.read().find("org.example.Y") != nullptr);
    CHECK_FALSE(folders.haveChanged());
    addService(tmp / "two", "z.service", "org.example.Z", "/bin/z");
    CHECK(folders.haveChanged());
}

} // namespace korvane::test
