#include "korvane-runner/Bus/Linux/StartedServices.h"

#include "Support/Expect.h"
#include "Support/Waiting.h"

#include <csignal>
#include <sys/wait.h>

using namespace korvane::runner::bus;
using namespace korvane::test;

namespace {

/// The child of this process that has ended, which it remains.
int endedChild() {
    siginfo_t info{};
    REQUIRE(::waitid(P_ALL, 0, &info, WEXITED | WNOWAIT) == 0);
    return info.si_pid;
}

} // namespace

TEST_CASE("the last of a name is asked to end, which earlier ones need not hear of") {
    const TempDir tmp;
    const DescriptorLimit limit;
    StartedServices services({.environment = {}, .output = {}, .address = "unix:path=/x"}, limit);
    const auto gate = makeFifo(tmp / "gate");
    const ServiceFile service{.name = "org.example.Service",
                              .command = {"/bin/sh", "-c", "read x <" + quoted(gate)}};
    CHECK_FALSE(services.askToEnd(service.name));
    REQUIRE_FALSE(services.start(service, {}));
    const auto first = services.processOf(service.name);
    REQUIRE_FALSE(services.start(service, {}));
    REQUIRE(first);
    const auto second = services.processOf(service.name);
    CHECK(second != first);

    CHECK(services.askToEnd(service.name));
    const int last = endedChild();
    CHECK(last == second);
    const auto ended = services.reap(last);
    REQUIRE(ended);
    CHECK(ended->name == service.name);
    CHECK(ended->isLatest);

    REQUIRE_FALSE(services.start(service, {}));
    services.sendSignal(*first, SIGTERM);
    CHECK(endedChild() == *first);
    CHECK_FALSE(services.reap(*first)->isLatest);
    CHECK(services.askToEnd(service.name));
    CHECK(services.reap(endedChild())->isLatest);
    CHECK(services.count() == 0);
}
