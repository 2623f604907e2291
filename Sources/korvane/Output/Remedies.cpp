#include "korvane/Output/Remedies.h"

#include "Ambrel/Base/Path.h"
#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Quoting.h"
#include "korvane/Output/Messages.h"

#include <algorithm>
#include <array>

namespace korvane {

namespace {

/// Remedies that are said in the same words whatever they are for. What begins with a colon takes
/// the place of the sentence's dot.
constexpr std::array<std::pair<Remedy, const char*>, 15> remedySentences{{
    {Remedy::chooseName, " Choose another name, or another folder with --output."},
    {Remedy::chooseFolder,
     " Remove it first, or choose another folder with: korvane adopt … --into DIR"},
    {Remedy::chooseHome, " Choose another one with --home."},
    {Remedy::chooseIdentifier, " Choose another one with --bundle-id."},
    {Remedy::chooseRunner, " Name its file with --runner."},
    {Remedy::chooseIcon, ": give one with --icon."},
    {Remedy::replace, " Replace it with --replace."},
    {Remedy::goWithoutProfile, " Mend it, or go without it with --no-profile."},
    {Remedy::changeHome, " Choose another one."},
    {Remedy::createAgain, " Make it anew with: korvane create … --replace"},
    {Remedy::createAgainWithIdentifier,
     " An instance gets another identifier with: korvane create … --replace --bundle-id ID"},
    {Remedy::lookAgain, " Try again."},
    {Remedy::hideFromDesktop, " An instance leaves the menu with: korvane unregister NAME"},
    {Remedy::listApplications, " See: korvane apps"},
    {Remedy::listLeftovers, " See: korvane leftovers"},
}};

std::string suggestion(const std::vector<std::string>& alternatives) {
    return alternatives.empty() ? "" : " Did you mean " + inQuotes(alternatives.front()) + "?";
}

/// `sentence` with a line for each of `names`.
std::string listed(std::string sentence, const std::vector<std::string>& names) {
    for (const auto& name : names) sentence += "\n  " + ambrel::utf8::oneLine(name);
    return sentence;
}

std::string remedyText(Remedy remedy, const std::string& subject,
                       const std::vector<std::string>& alternatives) {
    switch (remedy) {
    case Remedy::changeAddress:
        return " Give it another one with: " + commandLine("edit", {subject}) + " --set url=URL";
    case Remedy::shareFolders:
        return " Let it share yours with: " + commandLine("edit", {subject}) +
               " --set shareUserFolders=true";
    case Remedy::adoptFirst:
        return " An installed program becomes an application with: " +
               commandLine("adopt", {subject});
    case Remedy::adoptAgain:
        return " Make it again with: " +
               commandLine("adopt", {std::string(ambrel::paths::stem(subject))});
    case Remedy::keepApart:
        return " Close the copy that runs outside, or keep this one apart by an argument of its "
               "own: " +
               commandLine("edit", {subject}) + " --add-arg ARG";
    case Remedy::registerAgain:
        return " Try again with: " + commandLine("register", {subject});
    case Remedy::stopFirst:
        return " Stop it first with: " + commandLine("stop", {subject});
    case Remedy::workOutArguments:
        return " Get them back with: " + commandLine("edit", {subject}) + " --unset extraArgs";
    case Remedy::workOutVariables:
        return " Get them back with: " + commandLine("edit", {subject}) + " --unset environment";
    case Remedy::deleteFirst:
        return listed(" Delete first:", alternatives);
    case Remedy::nameByPath:
        return listed(" Name one of them by its path:", alternatives);
    case Remedy::listInstances:
        return suggestion(alternatives) + " See: korvane list";
    case Remedy::nameSuggested:
        return suggestion(alternatives);
    default:
        break;
    }
    for (const auto& [known, text] : remedySentences) {
        if (known == remedy) return text;
    }
    return {};
}

std::string joined(std::string sentence, const std::string& remedy) {
    if (remedy.starts_with(':') && sentence.ends_with('.')) sentence.pop_back();
    return sentence + remedy;
}

} // namespace

std::string wholeText(const Refusal& refusal) {
    const bool isOnDesktop =
        refusal.kind == Refusal::Kind::entryTaken && refusal.remedy == Remedy::chooseIdentifier;
    if (isOnDesktop) return refusal.sentence() + " Choose another identifier with --bundle-id.";
    const auto text = joined(refusal.sentence(),
                             remedyText(refusal.remedy, refusal.subject, refusal.alternatives));
    if (refusal.kind != Refusal::Kind::endedAtOnce || refusal.alternatives.empty()) return text;
    // A command that is to be typed ends its line.
    const auto* const between = refusal.remedy == Remedy::none ? " " : "\n";
    return listed(text + between + "It wrote:", refusal.alternatives);
}

std::string wholeText(const Notice& notice) {
    switch (notice.kind) {
    case Notice::Kind::homeIsLong:
        return notice.sentence + " Choose a shorter one with --home.";
    case Notice::Kind::homeExisted:
        return notice.sentence + " Choose one of its own with --home.";
    default:
        return joined(notice.sentence, remedyText(notice.remedy, notice.subject, {}));
    }
}

void tell(const Surroundings& surroundings, const Notice& notice) {
    const bool isWarning = notice.severity == Notice::Severity::warning;
    (isWarning ? warn : say)(surroundings, wholeText(notice));
}

void tell(const Surroundings& surroundings, const std::vector<Notice>& notices) {
    for (const auto& notice : notices) tell(surroundings, notice);
}

} // namespace korvane
