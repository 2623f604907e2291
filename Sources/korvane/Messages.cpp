#include "korvane/Messages.h"

#include "Ambrel/Base/Utf8.h"

#include <algorithm>
#include <istream>
#include <numeric>
#include <ostream>

namespace korvane {

void say(const Surroundings& surroundings, std::string_view line) {
    surroundings.messages << line << '\n';
}

void warn(const Surroundings& surroundings, std::string_view line) {
    const auto mark = surroundings.useColor ? "\033[33mwarning:\033[0m " : "warning: ";
    surroundings.messages << mark << line << '\n';
}

std::string inQuotes(std::string_view text) { return "\"" + ambrel::utf8::oneLine(text) + "\""; }

std::string shellWord(std::string_view word) {
    const auto isPlain = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return std::isalnum(byte) != 0 || byte >= 0x80 ||
               std::string_view("_-./:@%+,={}~").find(c) != std::string_view::npos;
    };
    if (!word.empty() && std::all_of(word.begin(), word.end(), isPlain)) {
        return ambrel::utf8::oneLine(word);
    }
    return ambrel::utf8::oneLine(shellQuoted(word));
}

std::string shellQuoted(std::string_view word) {
    std::string quoted = "'";
    for (const char c : word) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

std::string commandLine(std::string_view verb, const std::vector<std::string>& words) {
    std::string line = "korvane " + std::string(verb);
    for (const auto& word : words) {
        if (word.starts_with('-')) line += " --";
        line += " " + shellWord(word);
    }
    return line;
}

namespace {

/// How many single-character changes lead from one word to the other, a swap of neighbours
/// counting as one.
std::size_t distance(std::string_view left, std::string_view right) {
    std::vector<std::vector<std::size_t>> table(left.size() + 1,
                                                std::vector<std::size_t>(right.size() + 1));
    for (std::size_t i = 0; i <= left.size(); ++i) table[i][0] = i;
    std::iota(table[0].begin(), table[0].end(), std::size_t{0});
    for (std::size_t i = 1; i <= left.size(); ++i) {
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t change = left[i - 1] == right[j - 1] ? 0 : 1;
            table[i][j] =
                std::min({table[i - 1][j] + 1, table[i][j - 1] + 1, table[i - 1][j - 1] + change});
            const bool swapped =
                i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
            if (swapped) table[i][j] = std::min(table[i][j], table[i - 2][j - 2] + 1);
        }
    }
    return table[left.size()][right.size()];
}

} // namespace

std::string nearest(std::string_view typed, const std::vector<std::string>& known) {
    // Long words are no misspellings, and the table would grow with their product.
    if (typed.empty() || typed.size() > 64) return {};
    std::string best;
    std::size_t least = typed.size() < 4 ? 2 : 3;
    for (const auto& candidate : known) {
        if (candidate.size() > 64) continue;
        const auto changes = distance(typed, candidate);
        if (changes < least) {
            least = changes;
            best = candidate;
        }
    }
    return best;
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
