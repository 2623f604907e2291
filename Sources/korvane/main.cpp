#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/Terminal.h"
#include "korvane/CommandLine/CommandLine.h"
#include "korvane/CommandLine/UsageError.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Remedies.h"
#include "korvane/Verbs/AllVerbs.h"

#include <charconv>
#include <iostream>
#include <unistd.h>

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

std::string valueOf(const ambrel::Environment& environment, const char* name) {
    const auto found = environment.find(name);
    return found == environment.end() ? std::string() : found->second;
}

bool wantsColor(const ambrel::Environment& environment) {
    return isatty(STDERR_FILENO) != 0 && valueOf(environment, "NO_COLOR").empty() &&
           valueOf(environment, "TERM") != "dumb";
}

/// COLUMNS goes before what the terminal itself says, for who wants it otherwise.
std::optional<std::size_t> widthOfResults(const ambrel::Environment& environment) {
    if (isatty(STDOUT_FILENO) == 0) return std::nullopt;
    const auto wanted = valueOf(environment, "COLUMNS");
    std::size_t columns = 0;
    const auto* end = wanted.data() + wanted.size();
    const auto [parsed, error] = std::from_chars(wanted.data(), end, columns);
    if (error == std::errc() && parsed == end && columns > 0) return columns;
    return ambrel::terminal::columnsOf(STDOUT_FILENO);
}

korvane::Surroundings surroundingsOfThisProcess() {
    const auto environment = ambrel::processEnvironment();
    return {.input = std::cin,
            .results = std::cout,
            .messages = std::cerr,
            .inputIsTerminal = isatty(STDIN_FILENO) != 0,
            .messagesAreTerminal = isatty(STDERR_FILENO) != 0,
            .useColor = wantsColor(environment),
            .width = widthOfResults(environment),
            .environment = environment,
            .user = ambrel::UserPlaces::ofThisProcess()};
}

int report(const korvane::Surroundings& surroundings, const std::string& text, int status) {
    korvane::complain(surroundings, text);
    return status;
}

/// Paths and colors that are none are words of the command line that are wrong.
int statusOf(const korvane::Refusal& refusal) {
    using Kind = korvane::Refusal::Kind;
    const bool isUsage = refusal.kind == Kind::badPath || refusal.kind == Kind::badColor;
    return isUsage ? wrongUsage : failed;
}

int runChecked(const std::vector<std::string>& words, const korvane::Surroundings& surroundings) {
    try {
        const int status = korvane::CommandLine(korvane::allVerbs()).run(words, surroundings);
        if (std::cout.flush()) return status;
        return report(surroundings, "Cannot write the result.", failed);
    } catch (const korvane::UsageError& error) {
        return report(surroundings, error.what(), wrongUsage);
    } catch (const korvane::Refusal& error) {
        return report(surroundings, korvane::wholeText(error), statusOf(error));
    } catch (const std::exception& error) {
        return report(surroundings, ambrel::utf8::oneLine(error.what()), failed);
    }
}

} // namespace

int main(int argc, char** argv) {
    const auto surroundings = surroundingsOfThisProcess();
    return runChecked({argv + 1, argv + argc}, surroundings);
}
