#pragma once

#include "Support/Files.h"

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace korvane::test {

/// What the probe program wrote about itself.
class Report {
public:
    explicit Report(const Path& file) : text_(readFile(file)) {}

    /// The rest of every line that begins with `word` and a blank, in order.
    std::vector<std::string> lines(const std::string& word) const {
        std::vector<std::string> found;
        std::istringstream stream(text_);
        for (std::string line; std::getline(stream, line);) {
            if (line.rfind(word + " ", 0) == 0) found.push_back(line.substr(word.size() + 1));
        }
        return found;
    }

    /// One bit for each ignored signal, SIGHUP the lowest. The C library keeps two for itself and
    /// starts every child with them ignored; they do not count.
    unsigned long ignoredSignals() const {
        constexpr unsigned long ownOfCLibrary = 3UL << 31;
        return std::stoul(lines("SigIgn").at(0), nullptr, 16) & ~ownOfCLibrary;
    }

    std::map<std::string, std::string> environment() const {
        std::map<std::string, std::string> variables;
        for (const auto& line : lines("env")) {
            variables[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
        }
        return variables;
    }

private:
    std::string text_;
};

} // namespace korvane::test
