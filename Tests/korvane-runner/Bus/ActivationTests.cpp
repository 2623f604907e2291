#include "korvane-runner/Bus/Activation.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace korvane::test;
using namespace std::chrono_literals;

namespace {

using Hold = Activation::Hold;
using Messages = std::vector<WaitingMessage>;

const Activation::Time begin{};

Activation example() { return Activation({.time = 1'000ms, .messages = 4, .bytes = 100}); }

WaitingMessage message(std::uint64_t ticket, std::size_t size = 10, std::uint64_t client = 1) {
    return {client, ticket, size};
}

void checkError(const Activation::Release& release, const std::string& name,
                const std::string& text) {
    REQUIRE(release.error);
    CHECK(release.error->name == name);
    CHECK(release.error->text == text);
    CHECK(release.messages == Messages{message(1)});
}

} // namespace

TEST_CASE("a service is started once, and messages go on in their order when it is there") {
    auto activation = example();
    CHECK(activation.hold("org.a", message(1), begin) == Hold::start);
    CHECK(activation.hold("org.b", message(2), begin) == Hold::start);
    CHECK(activation.hold("org.a", message(3), begin) == Hold::wait);
    CHECK(activation.isStarting("org.a"));

    const auto release = activation.acquired("org.a");

    CHECK(release.messages == Messages{message(1), message(3)});
    CHECK_FALSE(release.error);
    CHECK_FALSE(activation.isStarting("org.a"));
    CHECK(activation.isStarting("org.b"));
    CHECK(activation.acquired("org.a").messages.empty());
    CHECK(activation.hold("org.a", message(4), begin) == Hold::start);
}

TEST_CASE("who waits for what does not come is answered as the bus answers") {
    const auto started = [] {
        auto activation = example();
        activation.hold("org.a.b", message(1), begin);
        return activation;
    };
    checkError(started().notStarted("org.a.b", "No such file or directory"), "Spawn.ExecFailed",
               "Failed to execute program org.a.b: No such file or directory");
    checkError(started().exited("org.a.b", 3), "Spawn.ChildExited",
               "Process org.a.b exited with status 3");
    checkError(started().signaled("org.a.b", 9), "Spawn.ChildSignaled",
               "Process org.a.b received signal 9");
    checkError(started().expired(begin + 1'000ms), "TimedOut",
               "Failed to activate service 'org.a.b': timed out (service_start_timeout=1000ms)");
}

TEST_CASE("what ends well without the name is waited for until the time is over") {
    auto activation = example();
    activation.hold("org.a", message(1), begin);

    CHECK(activation.exited("org.a", 0).messages.empty());
    CHECK(activation.isStarting("org.a"));
    CHECK(activation.expired(begin + 999ms).messages.empty());
    CHECK(activation.expired(begin + 1'000ms).messages == Messages{message(1)});
    CHECK_FALSE(activation.isStarting("org.a"));
}

TEST_CASE("what ends that nobody waits for is no matter") {
    auto activation = example();
    for (const auto& release : {activation.acquired("org.a"), activation.notStarted("org.a", "no"),
                                activation.exited("org.a", 3), activation.signaled("org.a", 9),
                                activation.expired(begin)}) {
        CHECK(release.messages.empty());
        CHECK_FALSE(release.error);
    }
}

TEST_CASE("each start has its own time, which later messages do not lengthen") {
    auto activation = example();
    CHECK_FALSE(activation.nextExpiry());
    activation.hold("org.b", message(1), begin);
    activation.hold("org.a", message(2), begin + 500ms);
    activation.hold("org.b", message(3), begin + 600ms);

    CHECK((activation.nextExpiry() == begin + 1'000ms));
    CHECK(activation.expired(begin + 1'000ms).messages == Messages{message(1), message(3)});
    CHECK((activation.nextExpiry() == begin + 1'500ms));
    CHECK(activation.expired(begin + 1'499ms).messages.empty());
    CHECK(activation.expired(begin + 2'000ms).messages == Messages{message(2)});
    CHECK_FALSE(activation.nextExpiry());
}

TEST_CASE("what has taken too long is started anew only when it has ended") {
    using End = Activation::End;
    auto activation = example();
    activation.hold("org.a", message(1), begin);
    CHECK(activation.expired(begin + 1'000ms).service == "org.a");

    activation.askedToEnd("org.a");
    CHECK(activation.hold("org.a", message(2), begin + 2'000ms) == Hold::wait);
    CHECK(activation.hold("org.a", message(3), begin + 2'001ms) == Hold::wait);
    CHECK(activation.hold("org.b", message(4), begin + 2'002ms) == Hold::start);
    CHECK(activation.ended("org.b") == End::unasked);
    CHECK(activation.ended("org.a") == End::startsAnother);

    CHECK(activation.isStarting("org.a"));
    CHECK(activation.ended("org.a") == End::unasked); // that of another process
    CHECK(activation.exited("org.a", 1).messages == Messages{message(2), message(3)});
    CHECK(activation.hold("org.a", message(5), begin + 2'003ms) == Hold::start);
}

TEST_CASE("what has taken too long may come all the same, or nobody wants it any more") {
    using End = Activation::End;
    auto activation = example();
    activation.askedToEnd("org.a");
    activation.hold("org.a", message(1), begin);
    CHECK(activation.acquired("org.a").messages == Messages{message(1)});
    CHECK(activation.ended("org.a") == End::unasked);
    CHECK(activation.hold("org.a", message(2), begin) == Hold::start);

    activation.askedToEnd("org.b");
    CHECK(activation.ended("org.b") == End::nothingWaits);
    activation.askedToEnd("org.b");
    CHECK(activation.hold("org.b", message(3, 10, 9), begin) == Hold::wait);
    activation.clientGone(9);
    CHECK(activation.ended("org.b") == End::nothingWaits);
    CHECK(activation.hold("org.b", message(4), begin) == Hold::start);
}

TEST_CASE("only so many messages wait, and only so many bytes") {
    auto activation = example();
    CHECK(activation.hold("org.a", message(1, 60), begin) == Hold::start);
    CHECK(activation.hold("org.b", message(2, 41), begin) == Hold::full);
    CHECK_FALSE(activation.isStarting("org.b"));
    CHECK(activation.hold("org.b", message(3, 40), begin) == Hold::start);
    CHECK(activation.hold("org.b", message(4, 1), begin) == Hold::full);
    CHECK(activation.hold("org.b", message(5, 0), begin) == Hold::wait);
    CHECK(activation.hold("org.b", message(6, 0), begin) == Hold::wait);
    CHECK(activation.hold("org.b", message(7, 0), begin) == Hold::full);

    activation.acquired("org.a");
    CHECK(activation.hold("org.b", message(8, 60), begin) == Hold::wait);
    activation.exited("org.b", 1);
    CHECK(activation.hold("org.c", message(9, 100), begin) == Hold::start);
    CHECK(ActivationError::full("org.c").name == "LimitsExceeded");
}

TEST_CASE("a client that goes takes its messages along, and the start goes on") {
    auto activation = example();
    activation.hold("org.a", message(1, 50, 1), begin);
    activation.hold("org.a", message(2, 25, 2), begin);
    activation.hold("org.b", message(3, 25, 1), begin);

    CHECK(activation.clientGone(1) == Messages{message(1, 50, 1), message(3, 25, 1)});
    CHECK(activation.clientGone(1).empty());

    CHECK(activation.isStarting("org.b"));
    CHECK(activation.hold("org.b", message(4, 75, 2), begin) == Hold::wait);
    CHECK(activation.acquired("org.a").messages == Messages{message(2, 25, 2)});
}
