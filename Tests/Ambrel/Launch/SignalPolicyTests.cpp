#include "Ambrel/Launch/SignalPolicy.h"

#include "Support/Expect.h"

#include <csignal>
#include <string>
#include <vector>

using namespace ambrel;

namespace {

using Sender = ArrivedSignal::Sender;
using Waited = SignalPolicy::WaitedAtStart;

constexpr bool leader = true;

} // namespace

TEST_CASE("a signal is passed on unless the child has it already") {
    struct Row {
        std::string name;
        ArrivedSignal signal;
        Waited waited;
        bool isPassedOn;
    };
    const std::vector<Row> table{
        {"kill names this program", {SIGTERM, Sender::process}, Waited::no, true},
        {"kill -INT names this program", {SIGINT, Sender::process}, Waited::no, true},
        {"kill -HUP names this program", {SIGHUP, Sender::process}, Waited::no, true},
        {"kill names the leader", {SIGTERM, Sender::process, leader}, Waited::no, true},
        {"kill came early", {SIGTERM, Sender::process}, Waited::yes, true},
        {"an interrupt is typed", {SIGINT, Sender::kernel}, Waited::no, false},
        {"an interrupt is typed to a leader", {SIGINT, Sender::kernel, leader}, Waited::no, false},
        {"an interrupt was typed early", {SIGINT, Sender::kernel}, Waited::yes, true},
        {"the terminal went away", {SIGHUP, Sender::kernel}, Waited::no, false},
        {"the terminal went away early", {SIGHUP, Sender::kernel}, Waited::yes, true},
        {"the leader's terminal went away", {SIGHUP, Sender::kernel, leader}, Waited::no, true},
    };
    for (const auto& row : table) {
        CAPTURE(row.name);
        CHECK(SignalPolicy().passesOn(row.signal, row.waited) == row.isPassedOn);
    }
}

TEST_CASE("only the first typed signal of a kind can have come before the child was there") {
    SignalPolicy policy;
    const ArrivedSignal interrupt{SIGINT, Sender::kernel};
    const ArrivedSignal hangUp{SIGHUP, Sender::kernel};

    CHECK(policy.passesOn(interrupt, Waited::yes));
    CHECK_FALSE(policy.passesOn(interrupt, Waited::yes));
    CHECK(policy.passesOn(hangUp, Waited::yes)); // the first of another kind
    CHECK_FALSE(policy.passesOn(hangUp, Waited::yes));
}

TEST_CASE("a first signal from a process is the one that waited, so a typed one comes after it") {
    SignalPolicy policy;

    CHECK(policy.passesOn({SIGINT, Sender::process}, Waited::yes));
    CHECK_FALSE(policy.passesOn({SIGINT, Sender::kernel}, Waited::yes));
}

TEST_CASE("a signal from a process is passed on as often as it arrives") {
    SignalPolicy policy;
    for (int count = 0; count < 3; ++count) {
        CHECK(policy.passesOn({SIGTERM, Sender::process}, Waited::no));
    }
}
