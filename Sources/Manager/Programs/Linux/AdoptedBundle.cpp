#include "Manager/Programs/Linux/AdoptedBundle.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Launch/OpenedItems.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/HomeVariables.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Files/IconConversion.h"
#include "Manager/Programs/Linux/EngineMarks.h"
#include "Manager/Programs/Linux/EntryCall.h"
#include "Manager/Programs/Linux/ProgramFile.h"
#include "Manager/Rules/InfoPlistKeys.h"

#include <algorithm>

namespace korvane {

using ambrel::BundleLayout;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

/// The words of a command line, each in quotes.
class CommandText {
public:
    explicit CommandText(std::string start) : text(std::move(start)) {}

    void add(const std::string& word) { text.append(" ").append(shellQuoted(word)); }
    void addAll(const std::vector<std::string>& words) {
        for (const auto& word : words) add(word);
    }
    void addCall(const ProgramCall& call) {
        add(call.program);
        addAll(call.before);
    }
    std::string text;
};

std::string plainScript(const Adoption& adoption) {
    CommandText line("exec");
    if (adoption.terminal) {
        line.addCall(*adoption.terminal);
        // A terminal may hand over to a server, which has the user's home.
        line.text += " env";
        for (const auto& name : ambrel::homeVariableNames()) {
            line.text.append(" \"").append(name).append("=$").append(name).append("\"");
        }
    }
    line.addCall(adoption.call);
    line.text += " \"$@\"";
    line.addAll(adoption.call.behind);
    return "#!/bin/sh\n" + line.text + "\n";
}

/// A script's own name is the kernel's choice, so the name comes by a variable. Without "-p" a
/// variable of the user's could make bash read a file first.
std::string namingScript(const Adoption& adoption) {
    const auto started = startedBy(adoption.call);
    const std::string variable = processNameVariable;
    std::string text = "#!" + *adoption.namingShell + " -p\nexport -n " + variable + "\n";
    for (const auto& setting : started.settings) {
        text += "export " + shellQuoted(setting) + "\n";
    }
    text +=
        "[ -n \"$" + variable + "\" ] || " + variable + "=" + shellQuoted(adoption.program) + "\n";
    CommandText line("exec -a \"$" + variable + "\"");
    line.add(adoption.program);
    line.addAll(started.arguments);
    line.text += " \"$@\"";
    line.addAll(adoption.call.behind);
    return text + line.text + "\n";
}

/// A name of a language that is also that of a folder.
bool isLanguage(const std::string& text) {
    return !text.empty() && !text.starts_with('.') && std::ranges::all_of(text, [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               std::string_view("_@.-").find(c) != std::string_view::npos;
    });
}

/// The names in other languages, where applications have them.
void writeNames(const Adoption& adoption, const BundleLayout& layout) {
    for (const auto& [language, name] : adoption.names) {
        if (!isLanguage(language) || ambrel::utf8::oneLine(name) != name) continue;
        const auto folder = paths::join(layout.resources(), language + ".lproj");
        fileSystem::createFolders(folder);
        fileSystem::write(paths::join(folder, "InfoPlist.strings"),
                          ambrel::xmlPropertyList({{"CFBundleDisplayName", {name}}}));
    }
}

ambrel::PropertyListDictionary infoOf(const Adoption& adoption, const std::string& executable) {
    ambrel::PropertyListDictionary info{
        {"CFBundleIdentifier", {adoption.identifier}},
        {"CFBundleExecutable", {executable}},
        {"CFBundleName", {adoption.name}},
        {adoptedProgramKey, {adoption.program}},
    };
    if (adoption.terminal) info.insert({adoptedTerminalKey, {adoption.terminal->program}});
    if (!adoption.categories.empty()) info.insert({adoptedCategoriesKey, {adoption.categories}});
    if (!adoption.mimeTypes.empty()) info.insert({adoptedMimeTypesKey, {adoption.mimeTypes}});
    if (adoption.wantsOpenMark) info.insert({ambrel::openMarkKey, {std::string("--")}});
    if (adoption.isActivatable) info.insert({adoptedActivatableKey, {true}});
    return info;
}

void writeExecutable(const Adoption& adoption, const Path& place) {
    if (adoption.call.hasArguments() || adoption.terminal) {
        fileSystem::write(place, launcherScript(adoption));
        fileSystem::setPermissions(place, 0755);
    } else {
        fileSystem::createSymbolicLink(adoption.call.program, place);
    }
}

/// Looks through a bundle for what adopting does not make.
class ForeignItemSearch {
public:
    explicit ForeignItemSearch(const ambrel::AppBundle& app)
        : bundle_(app.url), executable_("Contents/MacOS/" + app.executableName) {}

    std::optional<Path> in(const Path& folder) const {
        for (const auto& name : fileSystem::list(paths::join(bundle_, folder))) {
            const auto item = folder.empty() ? Path(name) : paths::join(folder, name);
            const auto kind = fileSystem::kindOf(paths::join(bundle_, item));
            const bool isFolder = kind == fileSystem::ItemKind::folder;
            if (!(isFolder ? isOwnFolder(item) : isOwnFile(item))) return item;
            if (!isFolder) continue;
            if (auto found = in(item)) return found;
        }
        return std::nullopt;
    }

private:
    static bool isNames(const Path& folder) {
        return paths::deletingLastComponent(folder) == "Contents/Resources" &&
               paths::extension(folder) == "lproj";
    }
    static bool isOwnFolder(const Path& item) {
        constexpr std::string_view own[] = {"Contents", "Contents/MacOS", "Contents/Resources",
                                            "Contents/Frameworks", "Contents/Eclipse"};
        return isNames(item) || std::ranges::find(own, item) != std::end(own);
    }
    bool isOwnFile(const Path& item) const {
        constexpr std::string_view own[] = {
            "Contents/Info.plist",
            "Contents/Resources/AppIcon.icns",
            "Contents/Resources/application.ini",
            "Contents/Frameworks/Electron Framework.framework",
            "Contents/Eclipse/eclipse.ini",
        };
        if (item == executable_ || std::ranges::find(own, item) != std::end(own)) return true;
        return paths::lastComponent(item) == "InfoPlist.strings" &&
               isNames(Path(paths::deletingLastComponent(item)));
    }

    Path bundle_;
    Path executable_;
};

} // namespace

std::optional<Path> findForeignItem(const ambrel::AppBundle& app) {
    return ForeignItemSearch(app).in("");
}

std::string launcherScript(const Adoption& adoption) {
    return adoption.namingShell ? namingScript(adoption) : plainScript(adoption);
}

void writeAdoptedBundle(const Adoption& adoption, const Path& bundle) {
    const BundleLayout layout{bundle};
    const std::string executable{paths::lastComponent(adoption.call.program)};
    auto info = infoOf(adoption, executable);
    fileSystem::createFolders(layout.executables());
    fileSystem::createFolders(layout.resources());
    if (adoption.icon && tryConvertToIconFile(*adoption.icon, layout.icon())) {
        info.insert({"CFBundleIconFile", {std::string(BundleLayout::iconName)}});
    }
    writeExecutable(adoption, paths::join(layout.executables(), executable));
    writeNames(adoption, layout);
    for (const auto& mark : engineMarksOf(adoption.program, adoption.identifier)) {
        const auto link = paths::join(bundle, mark.place);
        fileSystem::createFolders(Path(paths::deletingLastComponent(link)));
        fileSystem::createSymbolicLink(mark.proof, link);
    }
    fileSystem::write(layout.infoPlist(), ambrel::xmlPropertyList(info));
}

} // namespace korvane
