#include "Ambrel/Base/Utf8.h"
#include "korvane/CommandLine/CommandLine.h"
#include "korvane/CommandLine/UsageError.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Remedies.h"
#include "korvane/Verbs/AllVerbs.h"

#include <iostream>
#include <unistd.h>

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

bool wantsColor(const ambrel::Environment& environment) {
    const auto valueOf = [&](const char* name) {
        const auto found = environment.find(name);
        return found == environment.end() ? std::string() : found->second;
    };
    return isatty(STDERR_FILENO) != 0 && valueOf("NO_COLOR").empty() && valueOf("TERM") != "dumb";
}

korvane::Surroundings surroundingsOfThisProcess() {
    const auto environment = ambrel::processEnvironment();
    return {.input = std::cin,
            .results = std::cout,
            .messages = std::cerr,
            .inputIsTerminal = isatty(STDIN_FILENO) != 0,
            .messagesAreTerminal = isatty(STDERR_FILENO) != 0,
            .useColor = wantsColor(environment),
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
