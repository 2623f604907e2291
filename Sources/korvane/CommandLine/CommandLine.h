#pragma once

#include "korvane/CommandLine/Verb.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// Finds the verb, reads its options and runs it, or shows help.
class CommandLine {
public:
    /// `verbs` in the order in which help lists them.
    explicit CommandLine(std::vector<Verb> verbs);

    /// `words` is the command line without the program's name. Returns the exit status. Throws
    /// UsageError for a command line that cannot be understood, and whatever the verb throws.
    int run(const std::vector<std::string>& words, const Surroundings& surroundings) const;

private:
    const Verb* find(const std::string& name) const;
    const Verb& requireVerb(const std::vector<std::string>& words) const;
    std::vector<std::string> namesBelow(const std::string& group) const;
    std::string overview(const std::string& group, std::optional<std::size_t> width) const;
    int help(const std::vector<std::string>& words, const Surroundings& surroundings) const;

    std::vector<Verb> verbs_;
};

} // namespace korvane
