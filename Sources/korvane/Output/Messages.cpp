#include "korvane/Output/Messages.h"

#include "Manager/Base/Quoting.h"

#include <istream>
#include <ostream>

namespace korvane {

void say(const Surroundings& surroundings, std::string_view line) {
    surroundings.messages << line << '\n';
}

void warn(const Surroundings& surroundings, std::string_view line) {
    const auto mark = surroundings.useColor ? "\033[33mwarning:\033[0m " : "warning: ";
    surroundings.messages << mark << line << '\n';
}

void complain(const Surroundings& surroundings, std::string_view text) {
    const auto mark = surroundings.useColor ? "\033[31mkorvane:\033[0m " : "korvane: ";
    surroundings.messages << mark << text << '\n';
}

std::string commandLine(std::string_view verb, const std::vector<std::string>& words) {
    std::string line = "korvane " + std::string(verb);
    for (const auto& word : words) {
        if (word.starts_with('-')) line += " --";
        line += " " + shellWord(word);
    }
    return line;
}

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

bool confirm(const Surroundings& surroundings, const std::string& question) {
    surroundings.messages << question << " [y/N] " << std::flush;
    std::string answer;
    std::getline(surroundings.input, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

} // namespace korvane
