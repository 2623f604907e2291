#include "korvane-runner/Web/BridgeMessage.h"

#include "Support/Expect.h"
#include "korvane-runner/Web/FakeWebDesktop.h"

#include <limits>

using namespace korvane::runner;
using namespace korvane::test;

namespace {

template <class Message> Message read(const Value& body) {
    const auto message = readBridgeMessage(body);
    REQUIRE(message);
    REQUIRE(std::holds_alternative<Message>(*message));
    return std::get<Message>(*message);
}

std::int64_t countOf(const Value& count) {
    return read<BadgeMessage>(message("badge", {{"count", count}})).count;
}

} // namespace

TEST_CASE("a message that is no dictionary or has no known type is none") {
    const Value::Fields payload{{"title", "t"}};
    const std::vector<Value> bodies{
        Value(),
        Value("notify"),
        Value(5),
        Value(Value::List()),
        Value(Value::Fields()),
        Value(Value::Fields{{"payload", payload}}),
        Value(Value::Fields{{"type", 5}, {"payload", payload}}),
        Value(Value::Fields{{"type", Value::Fields()}, {"payload", payload}}),
        message("", payload),
        message("Notify", payload),
        message("notify ", payload),
        message("titlexxxxxxxxxxxxxxxxxxxxxxxxxxxxxx", payload),
        message("permission", payload),
    };
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        CAPTURE(i);
        CHECK_FALSE(readBridgeMessage(bodies[i]));
    }
}

TEST_CASE("a payload that is missing or no dictionary counts as an empty one") {
    for (const auto& payload : {Value(), Value("title"), Value(7), Value(Value::List())}) {
        const auto with = [&](const char* type) {
            return Value(Value::Fields{{"type", type}, {"payload", payload}});
        };
        CHECK(read<NotifyMessage>(with("notify")) == NotifyMessage{});
        CHECK(read<BadgeMessage>(with("badge")) == BadgeMessage{0});
        CHECK(read<TitleMessage>(with("title")) == TitleMessage{});
    }
    CHECK(read<BadgeMessage>(Value::Fields{{"type", "badge"}}) == BadgeMessage{0});
}

TEST_CASE("texts of a message are taken as they are, and nothing else for one") {
    CHECK(read<NotifyMessage>(message("notify", {{"title", "T"}, {"body", "B"}})) ==
          NotifyMessage{"T", "B"});
    CHECK(read<NotifyMessage>(message("notify", {{"title", 5}, {"body", Value::Fields()}})) ==
          NotifyMessage{});
    CHECK(read<TitleMessage>(message("title", {{"title", "(3) Inbox"}})) ==
          TitleMessage{"(3) Inbox"});
    CHECK(read<TitleMessage>(message("title", {{"title", Value::List()}})) == TitleMessage{});
}

TEST_CASE("a text of any length is cut behind what can be of use") {
    const std::string huge(1'000'000, 'x');

    const auto notify = read<NotifyMessage>(message("notify", {{"title", huge}, {"body", huge}}));
    const auto title = read<TitleMessage>(message("title", {{"title", huge}}));

    CHECK(notify.title.size() == 1000);
    CHECK(notify.body.size() == 10'000);
    CHECK(title.title.size() == 100'000);
}

TEST_CASE("a count is a number that is exactly an integer, else 0") {
    using Limits = std::numeric_limits<double>;
    CHECK(countOf(5) == 5);
    CHECK(countOf(5.0) == 5);
    CHECK(countOf(-2) == -2); // what a negative count means the badge decides
    CHECK(countOf(-0.0) == 0);
    CHECK(countOf(9007199254740993.0) == 9007199254740992); // what the number really is
    CHECK(countOf(-9223372036854775808.0) == std::numeric_limits<std::int64_t>::min());
    for (const double number : {5.5, 0.1, -0.5, 9223372036854775808.0, 1e300, -1e300,
                                Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()}) {
        CAPTURE(number);
        CHECK(countOf(number) == 0);
    }
    CHECK(countOf("5") == 0);
    CHECK(countOf(Value()) == 0);
    CHECK(countOf(Value::List()) == 0);
    CHECK(countOf(Value::Fields()) == 0);
    CHECK(read<BadgeMessage>(message("badge", {{"source", "api"}})).count == 0);
}
