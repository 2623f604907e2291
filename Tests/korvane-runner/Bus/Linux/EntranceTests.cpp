#include "RawClient.h"

#include <array>
#include <cstdio>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

void checkCounts(ProxyWorld& world, const BusProxy::Counts& expected) {
    const auto counts = world.proxy().counts();
    CHECK(counts.programs == expected.programs);
    CHECK(counts.ofServices == expected.ofServices);
    CHECK(counts.leases == expected.leases);
}

} // namespace

TEST_CASE("another start of the instance has a lease for as long as it is connected") {
    ProxyWorld world;
    RawClient other(world);

    other.send("K");
    world.waitFor(other.socket(), {.reading = true});
    char answer = 0;
    CHECK(::read(other.socket(), &answer, 1) == 1);

    CHECK(answer == leaseByte);
    checkCounts(world, {.leases = 1});
    other.send("more of which nobody wants anything");
    int changes = 0;
    world.proxy().onChange([&] { ++changes; });
    other.close();
    world.waitUntil([&] { return changes > 0; });
    checkCounts(world, {});
    CHECK_FALSE(world.proxy().counts().isAnybodyThere());
}

TEST_CASE("clients are counted, and those of services told with what they have") {
    ProxyWorld world;
    int changes = 0;
    world.proxy().onChange([&] { ++changes; });
    RawClient editor(world);
    editor.join().requestName("org.example.Editor");
    world.waitUntil([&] { return changes > 0; });
    world.services().areAllOfServices = true;
    RawClient silent(world);
    world.proxy().acceptWaiting();

    checkCounts(world, {.programs = 1, .ofServices = 1});
    CHECK(world.proxy().clientsOfServices().empty()); // the one has not said anything
    RawClient started(world);
    started.join().requestName("org.example.Service");
    checkCounts(world, {.programs = 1, .ofServices = 2});
    const auto ofServices = world.proxy().clientsOfServices();
    REQUIRE(ofServices.size() == 1);
    CHECK(ofServices[0].process == ::getpid());
    CHECK(ofServices[0].names == std::vector<std::string>{"org.example.Service"});
    started.close();
    world.waitUntil([&] { return world.proxy().counts().ofServices == 1; });
    checkCounts(world, {.programs = 1, .ofServices = 1});
    world.waitUntil([&] { return changes > 0; });

    changes = 0;
    silent.close();
    world.waitUntil([&] { return changes > 0; });
    checkCounts(world, {.programs = 1});
    editor.close();
    world.waitUntil([&] { return world.proxy().counts().programs == 0; });
    checkCounts(world, {});
}

TEST_CASE("who begins with any other byte is no program") {
    ProxyWorld world;
    RawClient stranger(world);

    stranger.send("GET / HTTP/1.0\r\n\r\n");

    CHECK(stranger.isEnded());
    world.waitUntil([&] { return world.proxy().counts().programs == 0; });
}

TEST_CASE("who waits at a socket that is found no more is still taken, and others if it is again") {
    ProxyWorld world;
    RawClient late(world);
    const auto hidden = world.socket() + ".hidden";
    REQUIRE(std::rename(world.socket().c_str(), hidden.c_str()) == 0);

    world.proxy().acceptWaiting();
    CHECK(world.proxy().counts().programs == 1);
    REQUIRE(std::rename(hidden.c_str(), world.socket().c_str()) == 0);

    late.join();
    RawClient next(world);
    CHECK(next.join().requestName("org.example.Editor") == 1);
}

TEST_CASE("a thousand programs are served at once") {
    rlimit limit{};
    REQUIRE(::getrlimit(RLIMIT_NOFILE, &limit) == 0);
    const auto before = limit;
    limit.rlim_cur = limit.rlim_max;
    REQUIRE(limit.rlim_max >= 4096);
    REQUIRE(::setrlimit(RLIMIT_NOFILE, &limit) == 0);
    {
        ProxyWorld world;
        std::vector<RawClient> clients;
        for (int i = 0; i < 1000; ++i) {
            clients.emplace_back(world);
            clients.back().send(handshake() + hello().bytes());
        }

        for (auto& client : clients) {
            REQUIRE(client.receiveLine().starts_with("OK "));
            REQUIRE(client.receiveLine() == "AGREE_UNIX_FD");
            REQUIRE(client.receiveAnswer().text().starts_with(":1."));
        }
        CHECK(world.proxy().counts().programs == 1000);
        for (auto& client : clients) waitForBus(client);
        clients.clear();
        world.waitUntil([&] { return world.proxy().counts().programs == 0; });
    }
    REQUIRE(::setrlimit(RLIMIT_NOFILE, &before) == 0);
}

TEST_CASE("who is in is served while many more come") {
    ProxyWorld world;
    RawClient client(world);
    client.join();
    std::vector<RawClient> others;
    for (int i = 0; i < 200; ++i) {
        others.emplace_back(world);
        others.back().send(std::string(1, '\0'));
    }

    world.turn();
    CHECK(world.proxy().counts().programs < 100);
    world.waitUntil([&] { return world.proxy().counts().programs == 201; });
}

TEST_CASE("a bus that has no room for more is asked again") {
    const TempDir tmp;
    const auto bus = ProxyWorld::listenAt(tmp / "bus", 1);
    ProxyWorld world({.bus = tmp / "bus"});
    std::vector<RawClient> clients;
    for (int i = 0; i < 6; ++i) {
        clients.emplace_back(world);
        clients.back().send(handshake());
    }

    for (int i = 0; i < 6; ++i) {
        world.waitFor(bus.get(), {.reading = true});
        const ambrel::OwnedFd accepted(::accept4(bus.get(), nullptr, nullptr, SOCK_CLOEXEC));
        REQUIRE(accepted);
        world.waitFor(accepted.get(), {.reading = true});
        std::array<char, 100> room{};
        CHECK(::read(accepted.get(), room.data(), room.size()) ==
              static_cast<ssize_t>(handshake().size()));
    }
}

TEST_CASE("who has used up all descriptors lets others in when there are some again") {
    ProxyWorld world;
    RawClient client(world);
    RawClient accepted(world);
    client.join();
    RawClient waiting(world);
    for (auto* late : {&accepted, &waiting}) late->send(handshake() + hello().bytes());
    std::vector<ambrel::OwnedFd> taken;
    for (int fd = ::dup(0); fd >= 0; fd = ::dup(0)) taken.emplace_back(fd);

    waitForBus(client); // somebody who is in is served
    taken.clear();

    CHECK(accepted.receiveLine().starts_with("OK "));
    CHECK(waiting.receiveLine().starts_with("OK "));
}

TEST_CASE("only the user is let in") {
    if (::geteuid() != 0) {
        MESSAGE("NOT TRIED: only root can become another user");
        return;
    }
    ProxyWorld world;
    for (auto path = std::string(world.socket()); path != "/tmp" && path.size() > 1;
         path = path.substr(0, path.rfind('/'))) {
        REQUIRE(::chmod(path.c_str(), 0777) == 0);
    }

    const auto said = asOrdinaryUser([&] {
        RawClient stranger(world);
        return std::to_string(stranger.sendSome(std::string(1, '\0')));
    });
    world.proxy().acceptWaiting();

    CHECK(said == "1");
    CHECK(world.proxy().counts().programs == 0);
    RawClient own(world);
    own.send(std::string(1, '\0'));
    world.proxy().acceptWaiting();
    CHECK(world.proxy().counts().programs == 1);
}

} // namespace korvane::test
