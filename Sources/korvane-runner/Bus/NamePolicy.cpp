#include "korvane-runner/Bus/NamePolicy.h"

#include "Ambrel/Base/TextParts.h"
#include "korvane-runner/Bus/NameSyntax.h"

#include <algorithm>

namespace korvane::runner::bus {

namespace {

using ambrel::takeUntil;

std::optional<NameRule::Kind> kindOf(std::string_view word) {
    if (word == "call") return NameRule::Kind::call;
    if (word == "own") return NameRule::Kind::own;
    if (word == "secrets") return NameRule::Kind::secrets;
    return std::nullopt;
}

bool isFamily(std::string_view name) { return name.ends_with(".*") || name.ends_with("-*"); }

/// A family has two elements in front at least: less would be a vendor.
bool isPattern(std::string_view name) {
    if (!isFamily(name)) return isBusName(name) && !isUniqueName(name);
    return isBusName(name.substr(0, name.size() - 2));
}

} // namespace

std::optional<NameRule> NameRule::parse(std::string_view line) {
    const auto kind = kindOf(takeUntil(line, ' '));
    const auto name = takeUntil(line, ' ');
    if (!kind || !isPattern(name)) return std::nullopt;
    const auto reason = line.find_first_not_of(' ');
    if (reason == std::string_view::npos) return std::nullopt;
    return NameRule{*kind, std::string(name), std::string(line.substr(reason))};
}

bool NameRule::covers(std::string_view asked) const {
    if (!isFamily(name)) return asked == name;
    const auto beginning = std::string_view(name).substr(0, name.size() - 1);
    return asked.size() > beginning.size() && asked.starts_with(beginning);
}

std::vector<NameRule> nameRules(std::string_view text) {
    std::vector<NameRule> rules;
    while (!text.empty()) {
        if (auto rule = NameRule::parse(takeUntil(text, '\n'))) rules.push_back(std::move(*rule));
    }
    return rules;
}

NamePolicy::NamePolicy(Secrets secrets) : rules_(nameRules(sharedNames)), secrets_(secrets) {}

bool NamePolicy::isShared(std::string_view name, NameUse use) const {
    return std::ranges::any_of(rules_, [&](const NameRule& rule) {
        if (!rule.covers(name)) return false;
        if (rule.kind == NameRule::Kind::own) return true;
        if (use == NameUse::own) return false;
        return rule.kind == NameRule::Kind::call || secrets_ == Secrets::shared;
    });
}

bool NamePolicy::isHidden(std::string_view name) const {
    return secrets_ == Secrets::hidden && std::ranges::any_of(rules_, [name](const NameRule& rule) {
               return rule.kind == NameRule::Kind::secrets && rule.covers(name);
           });
}

} // namespace korvane::runner::bus
