#include "Manager/Programs/ProgramSearch.h"

#include "Ambrel/Application/AppCatalog.h"
#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Ambrel/Platform/Text.h"
#include "Manager/Base/NearestWord.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Programs/PathSearch.h"
#include "Manager/Programs/StartPlan.h"
#include "Manager/Rules/UserText.h"

#include <algorithm>
#include <functional>

namespace korvane {

using ambrel::AppBundle;
using ambrel::AppCatalog;
using ambrel::Environment;
using ambrel::Path;
using ambrel::UserPlaces;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

constexpr std::string_view entryExtension = "desktop";
constexpr std::string_view bundleExtension = "app";

enum class Case { exact, any };

bool isPath(const std::string& text) {
    if (text.find('/') != std::string::npos || text.starts_with('~')) return true;
    if (paths::extension(text) == entryExtension) return fileSystem::exists(text);
    return paths::extension(text) == bundleExtension && fileSystem::isFolder(text);
}

/// The names that a bundle has in other languages.
std::vector<std::string> translatedNamesOf(const Path& bundle) {
    std::vector<std::string> names;
    const auto resources = ambrel::BundleLayout{bundle}.resources();
    try {
        for (const auto& folder : fileSystem::list(resources)) {
            if (paths::extension(folder) != "lproj") continue;
            const auto texts = ambrel::readPropertyList(
                paths::join(paths::join(resources, folder), "InfoPlist.strings"));
            const auto name = texts ? texts->find("CFBundleDisplayName") : decltype(texts->end())();
            if (!texts || name == texts->end()) continue;
            if (const auto* text = name->second.string()) names.push_back(*text);
        }
    } catch (const ambrel::FileError&) {
        // A bundle without resources has no other names.
    }
    return names;
}

AppBundle requireBundle(const Path& path) {
    if (auto app = AppBundle::read(path)) return *app;
    throw Refusal(Refusal::Kind::unreadableApplication, path,
                  "Not a readable .app: " + ambrel::utf8::oneLine(path));
}

class Search {
public:
    Search(const std::string& text, KnownApplications known, const UserPlaces& user,
           const Environment& environment)
        : text_(text), lowercased_(ambrel::text::lowercased(text)), known_(known), user_(user),
          environment_(environment) {}

    MeantProgram meant() {
        if (isPath(text_)) return atPath(usablePath(text_, user_));
        using Step = std::optional<MeantProgram> (Search::*)(Case);
        std::vector<Step> steps{&Search::byId, &Search::byName, &Search::byTranslation,
                                &Search::byCommand};
        steps.insert(known_ == KnownApplications::areMeant ? steps.begin() : steps.end(),
                     &Search::inCatalog);
        for (const auto matching : {Case::exact, Case::any}) {
            for (const auto step : steps) {
                if (auto found = std::invoke(step, this, matching)) return std::move(*found);
            }
        }
        // It is there, and the reason why it cannot be used is worth more than a name like it.
        if (unusable_) return planAdoption(*unusable_, user_, environment_);
        refuseUnknown();
    }

private:
    using Apps = std::vector<AppCatalog::InstalledApp>;

    bool fits(const std::string& name, Case matching) const {
        if (matching == Case::exact) return name == text_;
        return ambrel::text::lowercased(name) == lowercased_;
    }

    const Apps& apps() {
        if (!apps_) apps_ = AppCatalog::scan(AppCatalog::defaultSearchDirs(user_));
        return *apps_;
    }
    const std::vector<ListedProgram>& programs() {
        if (!programs_) programs_ = listPrograms(user_, environment_);
        return *programs_;
    }

    [[noreturn]] void refuseSeveral(std::vector<std::string> places) const {
        throw Refusal(Refusal::Kind::severalApplications, text_,
                      "Several applications are called " + inQuotes(text_) + ".",
                      Remedy::nameByPath, std::move(places));
    }

    MeantProgram atPath(const Path& path) {
        const auto extension = paths::extension(path);
        const bool isBundle = extension == bundleExtension || !adoptionIsOffered() ||
                              fileSystem::exists(ambrel::BundleLayout{path}.infoPlist());
        if (isBundle) return requireBundle(path);
        if (extension == entryExtension) return application(path);
        if (fileSystem::isExecutableFile(path)) return ofProgram(path);
        throw Refusal(Refusal::Kind::unknownProgram, path,
                      ambrel::utf8::oneLine(path) + " is no program that can be run.");
    }

    /// The program by its entry, which knows more of it than its file.
    MeantProgram ofProgram(const Path& program) {
        auto entries = entriesOf(program, user_, environment_);
        if (entries.size() > 1) refuseSeveral(std::move(entries));
        return application(entries.empty() ? program : entries.front());
    }

    /// The application that was made of the program at `file`, else what it would be.
    MeantProgram application(const Path& file) {
        auto adoption = planAdoption(file, user_, environment_);
        if (known_ == KnownApplications::areLast) return adoption;
        for (const auto& known : apps()) {
            if (known.bundleId != adoption.identifier) continue;
            const auto app = AppBundle::read(known.url);
            if (app && isAdopted(*app) && programOf(*app) == adoption.program) return *app;
        }
        return adoption;
    }

    std::optional<MeantProgram> inCatalog(Case matching) {
        std::vector<std::string> found;
        for (const auto& app : apps()) {
            if (fits(app.name, matching) || fits(app.bundleId, matching)) found.push_back(app.url);
        }
        if (found.empty()) return std::nullopt;
        if (found.size() > 1) refuseSeveral(std::move(found));
        return requireBundle(found.front());
    }

    template <class Fits> std::vector<const ListedProgram*> listed(const Fits& isFitting) {
        std::vector<const ListedProgram*> found;
        bool isShown = false;
        for (const auto& program : programs()) {
            if (!isFitting(program)) continue;
            if (!program.isUsable) {
                if (!unusable_) unusable_ = program.file;
                continue;
            }
            if (program.isShown && !isShown) found.clear();
            isShown = isShown || program.isShown;
            if (program.isShown == isShown) found.push_back(&program);
        }
        return found;
    }

    template <class Fits> std::optional<MeantProgram> onlyListed(const Fits& isFitting) {
        const auto found = listed(isFitting);
        if (found.empty()) return std::nullopt;
        if (found.size() == 1) return application(found.front()->file);
        std::vector<std::string> files;
        for (const auto* program : found) files.push_back(program->file);
        refuseSeveral(std::move(files));
    }

    std::optional<MeantProgram> byId(Case matching) {
        // An id may end like a file name itself, as org.telegram.desktop does.
        auto found =
            onlyListed([&](const ListedProgram& program) { return fits(program.id, matching); });
        if (found) return found;
        return onlyListed([&](const ListedProgram& program) {
            return fits(program.id + "." + std::string(entryExtension), matching);
        });
    }

    std::optional<MeantProgram> byName(Case matching) {
        return onlyListed(
            [&](const ListedProgram& program) { return fits(program.name, matching); });
    }

    std::optional<MeantProgram> byTranslation(Case matching) {
        const auto isCalled = [&](const std::vector<std::string>& names) {
            return std::ranges::any_of(names,
                                       [&](const auto& name) { return fits(name, matching); });
        };
        auto found = onlyListed(
            [&](const ListedProgram& program) { return isCalled(program.translatedNames); });
        if (found || known_ == KnownApplications::areLast) return found;
        std::vector<std::string> bundles;
        for (const auto& app : apps()) {
            if (isCalled(translatedNamesOf(app.url))) bundles.push_back(app.url);
        }
        if (bundles.empty()) return std::nullopt;
        if (bundles.size() > 1) refuseSeveral(std::move(bundles));
        return requireBundle(bundles.front());
    }

    std::optional<MeantProgram> byCommand(Case matching) {
        if (!adoptionIsOffered()) return std::nullopt;
        if (const auto file = commandFor(matching)) return ofProgram(*file);
        return std::nullopt;
    }

    std::optional<Path> commandFor(Case matching) {
        if (matching == Case::exact) return findProgram(text_, environment_);
        for (const auto& program : programs()) {
            if (!program.isUsable || !fits(program.command, matching)) continue;
            if (auto file = findProgram(program.command, environment_)) return file;
        }
        return findProgram(lowercased_, environment_);
    }

    /// The only application or program whose name holds the text, whatever the case, else one that
    /// is called like it in some way.
    std::string nearestName() {
        std::vector<std::string> names;
        for (const auto& app : apps()) names.push_back(app.name);
        for (const auto& program : programs()) {
            const bool isNew = std::ranges::find(names, program.name) == names.end();
            if (program.isShown && isNew) names.push_back(program.name);
        }
        std::vector<std::string> holding;
        std::ranges::copy_if(names, std::back_inserter(holding), [&](const auto& name) {
            return ambrel::text::lowercased(name).find(lowercased_) != std::string::npos;
        });
        if (holding.size() == 1) return holding.front();
        for (const auto& app : apps()) names.push_back(app.bundleId);
        for (const auto& program : programs()) {
            if (!program.isUsable) continue;
            names.push_back(program.id);
            names.push_back(program.command);
        }
        return nearestInAnyCase(names);
    }

    std::string nearestInAnyCase(const std::vector<std::string>& names) const {
        auto found = nearest(text_, names);
        if (!found.empty()) return found;
        std::vector<std::string> lowercased;
        for (const auto& name : names) lowercased.push_back(ambrel::text::lowercased(name));
        found = nearest(lowercased_, lowercased);
        if (found.empty()) return found;
        const auto at = std::ranges::find(lowercased, found);
        return names[static_cast<std::size_t>(at - lowercased.begin())];
    }

    [[noreturn]] void refuseUnknown() {
        const auto meant = nearestName();
        throw Refusal(Refusal::Kind::unknownApplication, text_,
                      (adoptionIsOffered() ? "No application or installed program is called "
                                           : "No application is called ") +
                          inQuotes(text_) + ".",
                      meant.empty() ? Remedy::listApplications : Remedy::nameSuggested,
                      meant.empty() ? std::vector<std::string>() : std::vector{meant});
    }

    const std::string& text_;
    std::string lowercased_;
    KnownApplications known_;
    const UserPlaces& user_;
    const Environment& environment_;
    std::optional<Apps> apps_;
    std::optional<std::vector<ListedProgram>> programs_;
    std::optional<Path> unusable_;
};

} // namespace

MeantProgram requireMeantProgram(const std::string& text, KnownApplications known,
                                 const UserPlaces& user, const Environment& environment) {
    if (text.empty()) {
        throw Refusal(Refusal::Kind::unknownApplication, text, "The application's name is empty.");
    }
    requireUtf8(text, "the application");
    return Search(text, known, user, environment).meant();
}

} // namespace korvane
