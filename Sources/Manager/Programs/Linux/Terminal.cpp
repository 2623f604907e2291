#include "Manager/Programs/Terminal.h"

#include "Manager/Programs/PathSearch.h"

namespace korvane {

/// The first is what a desktop's "open a terminal" would start.
std::optional<ProgramCall> findTerminal(const ambrel::Environment& environment) {
    constexpr std::pair<const char*, const char*> terminals[] = {
        {"xdg-terminal-exec", nullptr}, // takes the command as it stands
        {"x-terminal-emulator", "-e"},  // Debian's choice of the user's
        {"xterm", "-e"},
        {"konsole", "-e"},
        {"xfce4-terminal", "-x"},
        {"gnome-terminal", "--"},
    };
    for (const auto& [name, option] : terminals) {
        const auto found = findProgram(name, environment);
        if (!found) continue;
        ProgramCall call{.program = *found, .before = {}, .behind = {}};
        if (option != nullptr) call.before.emplace_back(option);
        return call;
    }
    return std::nullopt;
}

} // namespace korvane
