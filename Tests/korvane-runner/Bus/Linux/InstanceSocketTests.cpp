#include "korvane-runner/Bus/Linux/InstanceSocket.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/SocketPath.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "korvane-runner/Bus/PrivateNames.h"

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace korvane::runner::bus;
using namespace korvane::test;
using namespace std::chrono_literals;
using ambrel::FileError;

namespace {

const BusAddress users{BusAddress::Kind::file, "/run/user/1/bus"};

/// No waiting for somebody who does not answer.
constexpr ClaimLimits impatient{.answer = 10ms, .all = 0ms};
constexpr ClaimLimits patient{.answer = 60s, .all = 60s};

struct Runtime {
    Runtime() { setMode(path, 0700); }
    SocketPlace place(const std::string& prefix = "one") const {
        return SocketPlace::of(prefix, users, {{"XDG_RUNTIME_DIR", path}});
    }

    TempDir tmp;
    Path path = makeFolder(tmp / "run");
};

ServedSocket serve(const SocketPlace& place) {
    auto claim = claimSocket(place, impatient);
    REQUIRE(std::holds_alternative<ServedSocket>(claim));
    return std::move(std::get<ServedSocket>(claim));
}

/// Answers one lease, as the proxy does.
void grant(int listening) {
    pollfd waiting{listening, POLLIN, 0};
    REQUIRE(::poll(&waiting, 1, 60000) == 1);
    const ambrel::OwnedFd guest(::accept(listening, nullptr, nullptr));
    char byte = 0;
    REQUIRE(::recv(guest.get(), &byte, 1, 0) == 1);
    REQUIRE(byte == 'K');
    REQUIRE(::send(guest.get(), &byte, 1, MSG_NOSIGNAL) == 1);
}

} // namespace

TEST_CASE("an instance's socket lies below the user's runtime folder, for this user alone") {
    const Runtime runtime;
    const auto place = runtime.place();

    const auto served = serve(place);

    CHECK(beginsWith(place.socketPath(), runtime.path + "/korvane/bus/"));
    for (const Path& folder :
         {runtime.path + "/korvane", runtime.path + "/korvane/bus", place.folderPath()}) {
        CHECK((modeOf(folder) & 07777) == 0700);
    }
    CHECK((modeOf(place.socketPath()) & 07777) == 0600);
}

TEST_CASE("instances and busses have sockets of their own") {
    const Runtime runtime;
    const auto place = runtime.place("one");
    const ambrel::Environment environment{{"XDG_RUNTIME_DIR", runtime.path}};

    CHECK(place.socketPath() == runtime.place("one").socketPath());
    CHECK(place.socketPath() != runtime.place("two").socketPath());
    const BusAddress other{BusAddress::Kind::abstract, "/run/user/1/bus"};
    CHECK(place.socketPath() != SocketPlace::of("one", other, environment).socketPath());
}

TEST_CASE("without a runtime folder of the user's the socket lies in the temporary folder") {
    const TempDir tmp;
    const auto folder = makeFolder(tmp / "run");
    const auto temporary = makeFolder(tmp / "t");
    const auto name = "/korvane-" + std::to_string(::getuid()) + "/bus/";
    setMode(folder, 0777);
    for (const std::string& runtime : {std::string(), std::string("run"), tmp / "none", folder}) {
        CAPTURE(runtime);
        const auto place =
            SocketPlace::of("one", users, {{"XDG_RUNTIME_DIR", runtime}, {"TMPDIR", temporary}});
        CHECK(beginsWith(place.socketPath(), temporary + name));
        CHECK(beginsWith(SocketPlace::of("one", users, {{"XDG_RUNTIME_DIR", runtime}}).socketPath(),
                         "/tmp" + name));
    }
}

TEST_CASE("a path that is too long for the bus's own library is never chosen") {
    const TempDir tmp;
    const auto prefix = privatePrefix(std::string(200, 'x'));
    const auto below = SocketPlace::of(prefix, users, {{"XDG_RUNTIME_DIR", tmp.path()}});
    const auto rest = below.socketPath().size() - tmp.path().size();
    for (const std::size_t length : {99U, 100U, 107U, 108U}) {
        CAPTURE(length);
        // A folder of which the socket has a path of that length.
        const auto deep = makeFolder(tmp / std::string(length - rest - tmp.path().size() - 1, 'd'));
        setMode(deep, 0700);

        const auto place = SocketPlace::of(prefix, users, {{"XDG_RUNTIME_DIR", deep}});

        CHECK(place.socketPath().size() <= 99);
        CHECK(beginsWith(place.socketPath(), length <= 99 ? deep : "/tmp/korvane-"));
    }
}

TEST_CASE("an instance of any name has its socket in the user's runtime folder") {
    const auto longest = privatePrefix(std::string(200, 'x'));
    const TempDir tmp;
    const auto place = SocketPlace::of(longest, users, {{"XDG_RUNTIME_DIR", tmp.path()}});

    CHECK(place.root == tmp.path());
    const SocketPlace usual{"/run/user/1234567890", place.folder};
    CHECK(usual.socketPath().size() <= 99);
}

TEST_CASE("a folder that others may enter, or that is a link, is not used") {
    const Runtime runtime;
    const auto folder = makeFolder(runtime.path + "/korvane");
    setMode(folder, 0750);
    CHECK(expectThrow<FileError>([&] { claimSocket(runtime.place(), impatient); }).code == EPERM);

    setMode(folder, 0700);
    const auto elsewhere = makeFolder(runtime.tmp / "elsewhere");
    setMode(elsewhere, 0700);
    makeLink(folder + "/bus", elsewhere);
    CHECK(expectThrow<FileError>([&] { claimSocket(runtime.place(), impatient); }).code == ENOTDIR);
    CHECK(namesIn(elsewhere).empty());
}

TEST_CASE("a folder of somebody else's is not used") {
    const Runtime runtime;
    const auto folder = makeFolder(runtime.path + "/korvane");
    setMode(folder, 0700);
    setMode(runtime.path, 0777);
    const auto place = runtime.place();
    giveToOrdinaryUser(runtime.path + "/korvane");
    if (::getuid() != 0) return; // nothing can be given away then

    CHECK(expectThrow<FileError>([&] {
              claimSocket({runtime.path, "korvane/bus/one"}, impatient);
          }).code == EPERM);
}

TEST_CASE("the user's bus is told beside the socket, to whoever is told the socket") {
    const Runtime runtime;
    const auto place = runtime.place();
    const BusAddress own{BusAddress::Kind::file, place.socketPath()};
    CHECK_FALSE(busBehind(own));
    {
        const auto served = serve(place);
        CHECK(busBehind(own) == users);
        CHECK_FALSE(busBehind(users));
        CHECK_FALSE(busBehind({BusAddress::Kind::abstract, place.socketPath()}));
        CHECK_FALSE(busBehind({BusAddress::Kind::file, place.folderPath() + "/ending"}));

        const auto told = place.folderPath() + "/bus";
        setMode(told, 0620);
        CHECK_FALSE(busBehind(own)); // by whom it was written nobody knows
        setMode(told, 0600);
        setMode(place.folderPath(), 0750);
        CHECK_FALSE(busBehind(own));
        setMode(place.folderPath(), 0700);
        writeFile(told, "unix:tcp=1");
        CHECK_FALSE(busBehind(own));
        makeLink(runtime.tmp / "link", place.folderPath());
        CHECK_FALSE(busBehind({BusAddress::Kind::file, runtime.tmp / "link/socket"}));
        served.remove();
    }
    CHECK(namesIn(runtime.path + "/korvane/bus").empty());
}

TEST_CASE("one serves the socket, and a second has it go on by a lease") {
    const Runtime runtime;
    const auto served = serve(runtime.place());
    std::thread proxy([&] { grant(served.listening()); });

    const auto claim = claimSocket(runtime.place(), patient);

    proxy.join();
    CHECK(std::holds_alternative<SocketLease>(claim));
}

TEST_CASE("whoever serves the socket and does not answer is no help, and not in the way for ever") {
    const Runtime runtime;
    {
        const auto served = serve(runtime.place());
        const auto error = expectThrow<FileError>([&] { claimSocket(runtime.place(), impatient); });
        CHECK(error.code == ETIMEDOUT);
        CHECK(error.path == runtime.place().socketPath());
    }
    CHECK(isThere(runtime.place().socketPath())); // as after a fault
    const auto again = serve(runtime.place());
    CHECK(isThere(runtime.place().socketPath()));
}

TEST_CASE("a hidden socket is found no more, keeps whom it has, and can be found again") {
    const Runtime runtime;
    const auto place = runtime.place();
    const auto served = serve(place);

    served.hide();
    CHECK_FALSE(isThere(place.socketPath()));
    CHECK(expectThrow<FileError>([&] { claimSocket(place, impatient); }).code == ETIMEDOUT);
    served.show();

    std::thread proxy([&] { grant(served.listening()); });
    CHECK(std::holds_alternative<SocketLease>(claimSocket(place, patient)));
    proxy.join();
}

TEST_CASE("nothing is left of a socket that is given up, and who waited for it serves the next") {
    const Runtime runtime;
    const auto place = runtime.place();
    std::optional<ServedSocket> served(serve(place));
    std::optional<SocketClaim> next;
    std::thread waiting([&] { next.emplace(claimSocket(place, {.answer = 1ms, .all = 60s})); });

    served->hide();
    served->remove();
    served.reset();

    waiting.join();
    REQUIRE(std::holds_alternative<ServedSocket>(*next));
    CHECK(isThere(place.socketPath()));
    std::get<ServedSocket>(*next).remove();
    CHECK(namesIn(runtime.path + "/korvane/bus").empty());
}
