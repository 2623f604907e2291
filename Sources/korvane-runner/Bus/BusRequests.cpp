#include "korvane-runner/Bus/BusRequests.h"

#include "korvane-runner/Bus/InjectedMessage.h"
#include "korvane-runner/Bus/MatchRule.h"

namespace korvane::runner::bus {

namespace {

/// Of names and values together, and of one of them: with more no program could be started.
constexpr std::size_t largestEnvironment = 1024 * 1024;
constexpr std::size_t longestVariable = 128 * 1024;

/// All are gone through for each call that adds some.
constexpr std::size_t mostVariables = 4096;

Verdict toBus(const MessageHeader& header, const std::vector<BodyValue>& values) {
    return Verdict::withBody(Side::bus, header, writtenBody(header.order, values));
}

std::string& textIn(BodyValue& value) { return std::get<std::string>(value); }

/// Why services are not to have it; empty where they can.
std::string_view faultOf(const std::map<std::string, std::string, std::less<>>& environment) {
    std::size_t size = 0;
    for (const auto& [name, value] : environment) {
        const auto length = name.size() + value.size() + 2;
        if (length > longestVariable) return "A variable is longer than 128 KiB";
        size += length;
    }
    if (size > largestEnvironment) return "The environment is longer than 1 MiB";
    if (environment.size() > mostVariables) return "There are more than 4096 variables";
    return {};
}

bool isVariableName(std::string_view name) {
    return !name.empty() && name.find('=') == std::string_view::npos;
}

} // namespace

Verdict BusRequests::verdict(const MessageHeader& header, const BusCall& call,
                             std::string_view body) {
    if (header.bodyLength > longestReadBody) {
        return client_.refused(header, "LimitsExceeded", "The arguments are longer than 4 MiB");
    }
    if (isAwaited(header, call) && client_.pending.isFull()) {
        return client_.refused(header, "LimitsExceeded", "Too many replies are waited for");
    }
    auto values = tryReadBody(header.order, call.signature, body);
    if (!values) return Verdict::unchanged(Side::bus);
    switch (call.kind) {
    case BusCallKind::rule:
        return aboutRule(header, std::move(*values));
    case BusCallKind::environment:
        return updateEnvironment(header, *values);
    case BusCallKind::monitor:
        return becomeMonitor(header, call, std::move(*values));
    case BusCallKind::allRules:
        return client_.refused(header, "AccessDenied",
                               "What others listen to is not told to programs of an instance");
    case BusCallKind::hello:
    case BusCallKind::activatableNames:
        await(header, call);
        return Verdict::unchanged(Side::bus);
    case BusCallKind::name:
    case BusCallKind::start:
    case BusCallKind::process:
    case BusCallKind::credentials:
        break;
    }
    return aboutName(header, call, std::move(*values));
}

// dbus-daemon gives a name, and replies, though no reply is wanted.
bool BusRequests::isAwaited(const MessageHeader& header, const BusCall& call) {
    return call.isAnswerChanged() && (header.isReplyExpected() || call.kind == BusCallKind::hello);
}

void BusRequests::await(const MessageHeader& header, const BusCall& call, std::string name) {
    if (isAwaited(header, call)) client_.pending.add(header.serial, {call.kind, std::move(name)});
}

Verdict BusRequests::aboutName(const MessageHeader& header, const BusCall& call,
                               std::vector<BodyValue> values) {
    const auto asked = textIn(values[0]);
    // Nobody can have the bus's own name, which the bus has an error for.
    if (!isBusName(asked) || asked == busName) return Verdict::unchanged(Side::bus);
    const auto name = client_.bus.names.toBus(asked, call.use);
    await(header, call, name);
    if (name == asked) return Verdict::unchanged(Side::bus);

    if (call.kind == BusCallKind::start && client_.bus.canStart(asked)) {
        return start(header, asked, name);
    }
    textIn(values[0]) = name;
    return toBus(header, values);
}

// The bus does not know of the service, and would say so even where it runs.
Verdict BusRequests::start(const MessageHeader& header, const std::string& asked,
                           const std::string& name) const {
    constexpr std::uint32_t started = 1;
    constexpr std::uint32_t runsAlready = 2;
    if (client_.bus.owners.isOwned(name)) return client_.answered(header, "u", {runsAlready});
    auto verdict = client_.answered(header, "u", {started});
    verdict.waitsFor = asked;
    return verdict;
}

// What stands for the parts of a rule takes many times the memory of its text.
Verdict BusRequests::tooLongRule(const MessageHeader& header) const {
    return client_.refused(header, "LimitsExceeded", "A match rule is longer than 16 KiB");
}

Verdict BusRequests::aboutRule(const MessageHeader& header, std::vector<BodyValue> values) {
    if (textIn(values[0]).size() > longestRule) return tooLongRule(header);
    auto rule = translatedRule(textIn(values[0]), client_.bus.names);
    auto verdict = Verdict::unchanged(Side::bus);
    if (rule.rule != textIn(values[0])) {
        textIn(values[0]) = std::move(rule.rule);
        verdict = toBus(header, values);
    }
    if (rule.second) {
        client_.isReservedOurs = true;
        auto call = injectedCall(header.order, reservedSerial, header.member, *rule.second);
        verdict.deliveries.push_back({Side::bus, Delivery::Content::injected, std::move(call)});
    }
    return verdict;
}

Verdict BusRequests::becomeMonitor(const MessageHeader& header, const BusCall& call,
                                   std::vector<BodyValue> values) {
    TextList rules;
    for (const auto& text : std::get<TextList>(values[0])) {
        if (text.size() > longestRule) return tooLongRule(header);
        auto rule = translatedRule(text, client_.bus.names);
        rules.push_back(std::move(rule.rule));
        if (rule.second) rules.push_back(std::move(*rule.second));
    }
    await(header, call);
    values[0] = std::move(rules);
    return toBus(header, values);
}

// The user's own services must not get what a program of an instance wants for its own.
Verdict BusRequests::updateEnvironment(const MessageHeader& header,
                                       const std::vector<BodyValue>& values) {
    auto environment = client_.bus.environment;
    for (const auto& [name, value] : std::get<TextPairs>(values[0])) {
        if (isVariableName(name)) environment.insert_or_assign(name, value);
    }
    if (const auto fault = faultOf(environment); !fault.empty()) {
        return client_.refused(header, "LimitsExceeded", std::string(fault));
    }
    client_.bus.environment = std::move(environment);
    return client_.answered(header, "", {});
}

} // namespace korvane::runner::bus
