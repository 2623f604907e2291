#include "korvane-runner/Bus/ServiceFile.h"

#include "Ambrel/Base/TextParts.h"
#include "Ambrel/Base/Utf8.h"
#include "korvane-runner/Bus/NameSyntax.h"

#include <algorithm>

namespace korvane::runner::bus {

namespace {

constexpr std::string_view group = "[D-BUS Service]";

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view takeLine(std::string_view& text) {
    auto line = ambrel::takeUntil(text, '\n');
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

std::string_view withoutBlanksBehind(std::string_view text) {
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::string_view withoutBlanksInFront(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    return text;
}

/// Absent where a backslash stands before a letter that means nothing.
std::optional<std::string> unescaped(std::string_view value) {
    constexpr std::string_view letters = "sntr\\";
    constexpr std::string_view meanings = " \n\t\r\\";
    std::string result;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\') {
            result += value[i];
            continue;
        }
        if (++i == value.size()) return std::nullopt;
        const auto letter = letters.find(value[i]);
        if (letter == std::string_view::npos) return std::nullopt;
        result += meanings[letter];
    }
    return result;
}

/// The values of the group, the first of each key.
using Values = std::map<std::string, std::string, std::less<>>;

/// Whether the line is one at all.
bool readLine(std::string_view line, bool& isInGroup, bool& isInAnyGroup, Values& values) {
    if (withoutBlanksInFront(line).empty() || line.starts_with('#')) return true;
    if (line.starts_with('[')) {
        isInGroup = line == group;
        isInAnyGroup = true;
        return line.ends_with(']');
    }
    const auto equals = line.find('=');
    if (!isInAnyGroup || equals == std::string_view::npos) return false;
    const auto key = withoutBlanksBehind(line.substr(0, equals));
    auto value = unescaped(withoutBlanksInFront(line.substr(equals + 1)));
    if (key.empty() || std::ranges::any_of(key, isBlank) || !value) return false;
    if (isInGroup) values.try_emplace(std::string(key), std::move(*value));
    return true;
}

std::optional<Values> readValues(std::string_view text) {
    Values values;
    bool isInGroup = false;
    bool isInAnyGroup = false;
    while (!text.empty()) {
        if (!readLine(takeLine(text), isInGroup, isInAnyGroup, values)) return std::nullopt;
    }
    return values;
}

/// Takes words off a command line.
class WordReader {
public:
    explicit WordReader(std::string_view line) : line_(line) {}

    /// False where a quotation does not end.
    bool readAll(std::vector<std::string>& words) {
        for (; !line_.empty(); line_.remove_prefix(1)) {
            const char c = line_.front();
            if (c == '#') break;
            if (isBlank(c))
                endWord(words);
            else if (!readPart(c))
                return false;
        }
        endWord(words);
        return true;
    }

private:
    void endWord(std::vector<std::string>& words) {
        if (isInWord_) words.push_back(std::move(word_));
        word_.clear();
        isInWord_ = false;
    }

    bool readPart(char c) {
        isInWord_ = true;
        if (c == '\'' || c == '"') return readQuoted(c);
        if (c == '\\') {
            if (line_.size() < 2) return false;
            line_.remove_prefix(1);
        }
        word_ += line_.front();
        return true;
    }

    /// Leaves the quote at the end for the loop to take off.
    bool readQuoted(char quote) {
        line_.remove_prefix(1);
        for (; !line_.empty() && line_.front() != quote; line_.remove_prefix(1)) {
            const bool isEscape =
                quote == '"' && line_.size() > 1 && line_.front() == '\\' &&
                std::string_view("\"\\`$").find(line_[1]) != std::string_view::npos;
            if (isEscape) line_.remove_prefix(1);
            word_ += line_.front();
        }
        return !line_.empty();
    }

    std::string_view line_;
    std::string word_;
    bool isInWord_ = false;
};

} // namespace

std::optional<std::vector<std::string>> commandWords(std::string_view line) {
    std::vector<std::string> words;
    if (!WordReader(line).readAll(words)) return std::nullopt;
    return words;
}

std::optional<ServiceFile> ServiceFile::parse(std::string_view text) {
    if (!ambrel::utf8::isValid(text) || text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    const auto values = readValues(text);
    if (!values) return std::nullopt;
    const auto name = ambrel::valueOf(*values, "Name");
    if (!isBusName(name) || isUniqueName(name)) return std::nullopt;
    auto command = commandWords(ambrel::valueOf(*values, "Exec"));
    if (!command || command->empty()) return std::nullopt;
    return ServiceFile{name, std::move(*command), ambrel::valueOf(*values, "SystemdService")};
}

bool ServiceFile::isStartable() const {
    const auto& program = command.front();
    return systemdService.empty() || (program != "/bin/false" && program != "/usr/bin/false");
}

void ServiceTable::add(const ServiceFile& service) { services_.try_emplace(service.name, service); }

const ServiceFile* ServiceTable::find(std::string_view name) const {
    const auto found = services_.find(name);
    if (found == services_.end() || !found->second.isStartable()) return nullptr;
    return &found->second;
}

std::vector<std::string> ServiceTable::names() const {
    std::vector<std::string> names;
    for (const auto& [name, service] : services_) {
        if (service.isStartable()) names.push_back(name);
    }
    return names;
}

} // namespace korvane::runner::bus
