#include "korvane-runner/Bus/MatchRule.h"

#include "korvane-runner/Bus/NameSyntax.h"

#include <algorithm>

namespace korvane::runner::bus {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

/// Reads a rule piece by piece.
class RuleReader {
public:
    explicit RuleReader(std::string_view text) : text_(text) {}

    /// Empty at the end of the rule, which is also where a key is missing before "=". Absent where
    /// there is no "=".
    std::optional<std::string> tryKey() {
        skipBlanks();
        const auto begin = position_;
        while (!isAtEnd() && next() != '=' && !isBlank(next())) ++position_;
        const auto key = text_.substr(begin, position_ - begin);
        skipBlanks();
        if (isAtEnd() ? !key.empty() : next() != '=') return std::nullopt;
        if (!isAtEnd()) ++position_;
        return std::string(key);
    }

    /// Up to the comma behind it, which is taken off too. Absent where a quotation does not end.
    std::optional<MatchRule::Part> tryValue(std::string key) {
        MatchRule::Part part{std::move(key), {}, position_, 0};
        bool isQuoted = false;
        for (; !isAtEnd() && (isQuoted || next() != ','); ++position_) {
            if (!isQuoted && next() == '\\') {
                takeEscape(part.value);
            } else if (next() == '\'') {
                isQuoted = !isQuoted;
            } else {
                part.value += next();
            }
        }
        if (isQuoted) return std::nullopt;
        part.valueLength = position_ - part.valueBegin;
        if (!isAtEnd()) ++position_;
        return part;
    }

private:
    /// Outside of quotes a backslash takes the next character along, whatever it is, and is itself
    /// gone before a quote alone.
    void takeEscape(std::string& value) {
        const auto pair = text_.substr(position_, 2);
        value += pair == "\\'" ? pair.substr(1) : pair;
        position_ += pair.size() - 1;
    }

    bool isAtEnd() const { return position_ >= text_.size(); }
    char next() const { return text_[position_]; }
    void skipBlanks() {
        while (!isAtEnd() && isBlank(next())) ++position_;
    }

    std::string_view text_;
    std::size_t position_ = 0;
};

/// Whether a key is about the first argument; the bus reads the number as C does.
bool isFirstArgument(std::string_view key) {
    if (!key.starts_with("arg")) return false;
    key.remove_prefix(3);
    if (key.starts_with('+')) key.remove_prefix(1);
    if (key.starts_with("0x") || key.starts_with("0X")) key.remove_prefix(2);
    return !key.empty() && key.find_first_not_of('0') == std::string_view::npos;
}

bool isAboutOwners(std::string_view member) {
    return member == "NameOwnerChanged" || member == "NameAcquired" || member == "NameLost";
}

/// Whether the first argument of what the rule is about is the name of a program.
bool isFirstArgumentName(const MatchRule& rule) {
    return isAboutOwners(rule.valueOf("member")) || rule.valueOf("sender") == busName ||
           rule.valueOf("interface") == busName;
}

/// What a program does with the name in the first argument: these two tell it of its own.
NameUse useOfArgument(const MatchRule& rule) {
    const auto member = rule.valueOf("member");
    return member == "NameAcquired" || member == "NameLost" ? NameUse::own : NameUse::call;
}

struct Exchange {
    const MatchRule::Part* part;
    std::string value;
};

/// The text with other values; names need no quoting.
std::string withValues(std::string_view text, const std::vector<Exchange>& exchanges) {
    std::string result;
    std::size_t position = 0;
    for (const auto& [part, value] : exchanges) {
        result.append(text.substr(position, part->valueBegin - position));
        result.append("'").append(value).append("'");
        position = part->valueBegin + part->valueLength;
    }
    return result.append(text.substr(position));
}

/// The exchanges that a rule needs on the bus.
class Translation {
public:
    Translation(const MatchRule& rule, InstanceNames& names)
        : rule_(rule), names_(names), isArgumentName_(isFirstArgumentName(rule)) {}

    TranslatedRule of(std::string_view text) {
        for (const auto& part : rule_.parts) translate(part);
        TranslatedRule result{withValues(text, first_)};
        if (isSecondNeeded_) result.second = withValues(text, second_);
        return result;
    }

private:
    void translate(const MatchRule::Part& part) {
        if (part.key == "sender" || part.key == "destination") {
            exchangeName(part, NameUse::call);
        } else if (isArgumentName_ && isFirstArgument(part.key)) {
            exchangeName(part, useOfArgument(rule_));
        } else if (isArgumentName_ && part.key == "arg0namespace") {
            exchangeNameSpace(part);
        }
    }

    void exchangeName(const MatchRule::Part& part, NameUse use) {
        if (!isBusName(part.value)) return;
        auto name = names_.toBus(part.value, use);
        if (name == part.value) return;
        first_.push_back({&part, name});
        second_.push_back({&part, std::move(name)});
    }

    void exchangeNameSpace(const MatchRule::Part& part) {
        if (!isNameSpace(part.value)) return;
        auto nameSpace = names_.nameSpaceToBus(part.value);
        if (!nameSpace) return;
        second_.push_back({&part, std::move(*nameSpace)});
        isSecondNeeded_ = true;
    }

    const MatchRule& rule_;
    InstanceNames& names_;
    bool isArgumentName_;
    std::vector<Exchange> first_;
    std::vector<Exchange> second_;
    bool isSecondNeeded_ = false;
};

} // namespace

std::optional<MatchRule> MatchRule::parse(std::string_view text) {
    MatchRule rule;
    RuleReader reader(text);
    while (true) {
        auto key = reader.tryKey();
        if (!key) return std::nullopt;
        // The bus reads no further either.
        if (key->empty()) return rule;
        auto part = reader.tryValue(std::move(*key));
        if (!part) return std::nullopt;
        rule.parts.push_back(std::move(*part));
    }
}

std::string_view MatchRule::valueOf(std::string_view key) const {
    const auto part = std::ranges::find(parts, key, &Part::key);
    return part == parts.end() ? std::string_view() : part->value;
}

TranslatedRule translatedRule(std::string_view text, InstanceNames& names) {
    const auto rule = MatchRule::parse(text);
    if (!rule) return {std::string(text)};
    return Translation(*rule, names).of(text);
}

} // namespace korvane::runner::bus
