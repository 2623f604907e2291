#include "Manager/Programs/Linux/DesktopEntry.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Quoting.h"

#include <algorithm>
#include <sstream>

namespace korvane {

namespace {

constexpr std::string_view mainGroup = "[Desktop Entry]";

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// The escapes of the type "string": \s, \n, \t, \r and \\. Others stay as they are, for the
/// quoting rules of Exec to judge.
std::string unescaped(const std::string& value) {
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const auto known =
            std::string_view("sntr\\").find(i + 1 < value.size() ? value[i + 1] : '?');
        if (value[i] != '\\' || known == std::string_view::npos) {
            text += value[i];
            continue;
        }
        text += " \n\t\r\\"[known];
        ++i;
    }
    return text;
}

/// One argument of Exec. Field codes count only outside quotes.
struct Argument {
    std::string text;
    bool isQuoted = false;
};

/// Splits Exec by its quoting rules.
class ExecReader {
public:
    explicit ExecReader(std::string_view text) : text_(text) {}

    std::vector<Argument> read() {
        std::vector<Argument> arguments;
        while (skipBlanks()) arguments.push_back(readArgument());
        return arguments;
    }

private:
    bool skipBlanks() {
        const auto next = text_.find_first_not_of(" \t\n");
        text_.remove_prefix(next == std::string_view::npos ? text_.size() : next);
        return !text_.empty();
    }

    Argument readArgument() {
        Argument argument;
        while (!text_.empty() &&
               std::string_view(" \t\n").find(text_.front()) == std::string_view::npos) {
            if (text_.front() == '"') {
                argument.isQuoted = true;
                readQuoted(argument.text);
            } else {
                argument.text += takeUnquoted();
            }
        }
        return argument;
    }

    char takeUnquoted() {
        const char c = text_.front();
        // A shell gives these a meaning, and the format wants them quoted.
        if (std::string_view("'\\`$<>|&;()").find(c) != std::string_view::npos) {
            throw DesktopEntryError("its Exec holds " + inQuotes({&c, 1}) + " outside quotes");
        }
        text_.remove_prefix(1);
        return c;
    }

    void readQuoted(std::string& into) {
        text_.remove_prefix(1);
        while (!text_.empty() && text_.front() != '"') {
            const bool escapes =
                text_.front() == '\\' && text_.size() > 1 &&
                std::string_view("\"`$\\").find(text_[1]) != std::string_view::npos;
            if (escapes) text_.remove_prefix(1);
            into += text_.front();
            text_.remove_prefix(1);
        }
        if (text_.empty()) throw DesktopEntryError("a quotation in its Exec does not end");
        text_.remove_prefix(1);
    }

    std::string_view text_;
};

/// Puts the arguments together, with the field codes replaced.
class CallBuilder {
public:
    CallBuilder(const DesktopEntry& entry, const ambrel::Path& file) : entry_(entry), file_(file) {}

    ProgramCall build(const std::vector<Argument>& arguments) {
        if (arguments.empty() || arguments.front().text.empty()) {
            throw DesktopEntryError("its Exec names no program");
        }
        call_.program = withoutCodes(arguments.front());
        if (call_.program.find('=') != std::string::npos) {
            throw DesktopEntryError("its Exec begins with " + inQuotes(call_.program) +
                                    ", which is no program");
        }
        for (auto argument = arguments.begin() + 1; argument != arguments.end(); ++argument) {
            add(*argument);
        }
        return std::move(call_);
    }

private:
    void add(const Argument& argument) {
        if (!argument.isQuoted && argument.text == "%i") {
            if (const auto icon = entry_.string("Icon"); icon && !icon->empty()) {
                append("--icon");
                append(*icon);
            }
        } else if (isForFiles(argument)) {
            placeFiles();
        } else {
            append(withoutCodes(argument));
        }
    }

    /// Whether the argument stands, alone or as a part, for files to open.
    static bool namesFiles(const std::string& text) {
        for (std::size_t i = 0; i + 1 < text.size(); ++i) {
            if (text[i] != '%') continue;
            if (std::string_view("fFuU").find(text[i + 1]) != std::string_view::npos) return true;
            ++i;
        }
        return false;
    }

    /// In quotes a field code is not defined; alone it can mean nothing else.
    static bool isForFiles(const Argument& argument) {
        if (argument.isQuoted && argument.text.size() != 2) return false;
        return namesFiles(argument.text);
    }

    void placeFiles() {
        if (hasFiles_) throw DesktopEntryError("its Exec asks for files twice");
        hasFiles_ = true;
        // What an instance adds are options for the most part: they go in front of the "--" that
        // keeps a file from being taken for one.
        if (!call_.before.empty() && call_.before.back() == "--") {
            call_.before.pop_back();
            call_.behind.emplace_back("--");
        }
    }

    void append(std::string text) {
        (hasFiles_ ? call_.behind : call_.before).push_back(std::move(text));
    }

    std::string withoutCodes(const Argument& argument) const {
        std::string text;
        for (std::size_t i = 0; i < argument.text.size(); ++i) {
            const auto code = argument.text.substr(i + 1, 1);
            const bool isForFiles =
                !code.empty() && std::string_view("fFuU").find(code) != std::string_view::npos;
            const bool isCode =
                argument.text[i] == '%' && (!argument.isQuoted || code == "%" || isForFiles);
            if (isCode && isForFiles) {
                ++i; // in the middle of a quotation it stands for no files
            } else if (!isCode) {
                text += argument.text[i];
            } else {
                text += expanded(i + 1 < argument.text.size() ? argument.text[++i] : ' ');
            }
        }
        return text;
    }

    std::string expanded(char code) const {
        switch (code) {
        case '%':
            return "%";
        case 'c':
            return entry_.string("Name").value_or("");
        case 'k':
            return file_;
        case 'd':
        case 'D':
        case 'n':
        case 'N':
        case 'v':
        case 'm':
            return {}; // deprecated, to be left out
        default:
            throw DesktopEntryError("its Exec holds an unknown field code");
        }
    }

    const DesktopEntry& entry_;
    const ambrel::Path& file_;
    ProgramCall call_;
    bool hasFiles_ = false;
};

} // namespace

DesktopEntry DesktopEntry::parse(std::string_view text) {
    if (!ambrel::utf8::isValid(text)) throw DesktopEntryError("it is not UTF-8");
    DesktopEntry entry;
    bool isMain = false;
    bool hasMain = false;
    std::istringstream lines{std::string(text)};
    for (std::string raw; std::getline(lines, raw);) {
        const auto line = trimmed(raw);
        if (line.empty() || line.starts_with('#')) continue;
        if (line.starts_with('[')) {
            isMain = line == mainGroup;
            hasMain = hasMain || isMain;
            continue;
        }
        const auto equals = line.find('=');
        if (!isMain || equals == std::string_view::npos) continue;
        // A repeated key is against the rules; the first one counts.
        entry.values_.emplace(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
    }
    if (!hasMain) throw DesktopEntryError("it has no group [Desktop Entry]");
    return entry;
}

std::optional<std::string> DesktopEntry::string(const std::string& key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return unescaped(found->second);
}

std::map<std::string, std::string> DesktopEntry::translations(const std::string& key) const {
    std::map<std::string, std::string> found;
    const auto start = key + "[";
    for (auto value = values_.lower_bound(start);
         value != values_.end() && value->first.starts_with(start); ++value) {
        if (!value->first.ends_with(']')) continue;
        const auto length = value->first.size() - start.size() - 1;
        found.emplace(value->first.substr(start.size(), length), unescaped(value->second));
    }
    return found;
}

bool DesktopEntry::isTrue(const std::string& key) const {
    const auto found = values_.find(key);
    return found != values_.end() && found->second == "true";
}

ProgramCall DesktopEntry::program(const ambrel::Path& file) const {
    const auto exec = string("Exec");
    if (!exec) throw DesktopEntryError("it has no Exec");
    return CallBuilder(*this, file).build(ExecReader(*exec).read());
}

} // namespace korvane
