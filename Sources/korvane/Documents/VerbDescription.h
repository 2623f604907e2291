#pragma once

#include "korvane/CommandLine/Verb.h"

#include <string>
#include <vector>

/// What is written from the declarations of the verbs while the manager is built: completions for
/// shells and the manual.
namespace korvane::documents {

struct OptionDescription {
    std::vector<std::string> names; ///< as they are typed, short ones first
    std::string value;              ///< its name in help; empty where the option takes none
    std::string description;
    Values values{};
    bool repeats = false;

    bool operator==(const OptionDescription&) const = default;
};

struct WordDescription {
    std::string name; ///< in help
    std::string description;
    Values values{};
    bool repeats = false;
};

/// One verb as its declaration tells it.
struct VerbDescription {
    std::string name; ///< one or two words
    std::string summary;
    std::vector<OptionDescription> options;
    std::vector<WordDescription> words; ///< those without an option, in order
    options::Rules rules{};
    std::vector<std::string> aliases{};
    std::vector<std::string> examples{}; ///< whole command lines

    /// "create" for "create app".
    std::string firstWord() const;
    /// "app" for "create app"; empty for a verb of one word.
    std::string secondWord() const;
};

/// `surroundings` are handed to the declarations, which only keep them.
std::vector<VerbDescription> describe(const std::vector<Verb>& verbs,
                                      const Surroundings& surroundings);

/// What can stand in the place of a verb's first word, in order, each once.
std::vector<std::string> firstWords(const std::vector<VerbDescription>& verbs);
/// What can follow `first`; empty where it is a verb and nothing else.
std::vector<const VerbDescription*> verbsBelow(const std::vector<VerbDescription>& verbs,
                                               const std::string& first);
/// The verb called so, also by an alias; null without one.
const VerbDescription* findVerb(const std::vector<VerbDescription>& verbs, const std::string& name);
/// What `first` is about: the summary of the verb, or what can follow it.
std::string summaryOf(const std::vector<VerbDescription>& verbs, const std::string& first);

/// The name of the verb and its aliases.
std::vector<std::string> namesOf(const VerbDescription& verb);

/// "a b c".
std::string joined(const std::vector<std::string>& words, const std::string& separator = " ");

} // namespace korvane::documents
