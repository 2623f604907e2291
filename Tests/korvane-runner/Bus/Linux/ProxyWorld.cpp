#include "ProxyWorld.h"

#include "Support/Files.h"

#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

constexpr auto aLongTime = std::chrono::seconds(30);

} // namespace

std::optional<std::string> FakeServices::start(const ServiceFile& service,
                                               const ServiceVariables& variables) {
    started.push_back(service.name);
    additions = variables;
    return reason;
}

bool FakeServices::askToEnd(std::string_view name) {
    asked.emplace_back(name);
    return isThere;
}

bool FakeServices::isOfService(std::int64_t process) {
    CHECK(process == ::getpid());
    return areAllOfServices;
}

ProxyWorld::ProxyWorld(const Setup& setup) {
    std::filesystem::create_directories(std::string(serviceFolder()));
    for (const auto& name : setup.services) addService(name);
    const ServicePlaces places{.runtimeFolder = {},
                               .instanceData = tmp_ / "data",
                               .userData = {},
                               .dataFolders = tmp_ / "none"};
    BusAddress address{BusAddress::Kind::file, setup.bus.value_or(bus_.socket())};
    proxy_ = std::make_unique<BusProxy>(
        loop_, services_,
        BusProxy::Setup{.listening = listenAt(socket(), 4096),
                        .bus = std::move(address),
                        .names = InstanceNames(PrivateNames("k_One"), NamePolicy(Secrets::shared)),
                        .folders = ServiceFolders(places),
                        .limits = setup.limits});
}

void ProxyWorld::addService(const std::string& name) const {
    writeFile(serviceFolder() + "/" + name + ".service",
              "[D-BUS Service]\nName=" + name + "\nExec=/bin/true\n");
}

ambrel::OwnedFd ProxyWorld::listenAt(const Path& path, int backlog) {
    ambrel::OwnedFd listening(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path.c_str());
    ::unlink(path.c_str());
    REQUIRE(::bind(listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
            0);
    REQUIRE(::listen(listening.get(), backlog) == 0);
    return listening;
}

void ProxyWorld::step() {
    const auto begin = PollLoop::Clock::now();
    REQUIRE(loop_.runOnce(aLongTime));
    REQUIRE(PollLoop::Clock::now() - begin < aLongTime);
    highestLoad_ = std::max(highestLoad_, proxy_->load());
}

void ProxyWorld::turn() {
    REQUIRE(loop_.runOnce(std::chrono::milliseconds(0)));
    highestLoad_ = std::max(highestLoad_, proxy_->load());
}

void ProxyWorld::waitFor(int fd, PollLoop::Interest interest) {
    bool isReady = false;
    const auto watch = loop_.watch(fd, interest, [&](PollLoop::Event) { isReady = true; });
    REQUIRE(watch);
    waitUntil([&] { return isReady; });
}

} // namespace korvane::test
