#include "Manager/Programs/ProgramTraits.h"

#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Pipe.h"
#include "Manager/Programs/Linux/EntryCall.h"
#include "Manager/Programs/Linux/LinkedLibraries.h"
#include "Manager/Programs/Linux/PackageVersion.h"
#include "Manager/Programs/Linux/ProgramFile.h"
#include "Manager/Programs/Linux/ProgramFolders.h"
#include "Manager/Programs/PathSearch.h"

#include <algorithm>
#include <fcntl.h>

namespace korvane::installedProgram {

using ambrel::Environment;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

std::string osRelease() {
    for (const char* file : {"/etc/os-release", "/usr/lib/os-release"}) {
        if (fileSystem::exists(file)) return fileSystem::read(file);
    }
    return {};
}

/// What the package database answers, in one language; empty when the tool fails.
std::string query(const Path& tool, const std::vector<std::string>& words) {
    auto pipe = ambrel::Pipe::make();
    const auto nowhere = std::make_shared<const ambrel::OwnedFd>(
        ambrel::OwnedFd::open("open", "/dev/null", O_WRONLY));
    ambrel::ChildProcess process({.executable = tool,
                                  .arguments = words,
                                  .environment = Environment{{"LC_ALL", "C"}},
                                  .standardOutput = pipe.writeEnd,
                                  .standardError = nowhere});
    process.launch();
    auto answer = pipe.readToEnd();
    process.waitUntilExit();
    return process.terminationStatus() == 0 ? answer : std::string();
}

/// Where /bin is a link to /usr/bin, the database may know a file by either path.
std::vector<Path> namesOf(const Path& file) {
    constexpr std::string_view merged = "/usr";
    if (!file.starts_with("/usr/")) return {file};
    return {file, file.substr(merged.size())};
}

std::string packageVersion(const Path& program, const Environment& environment) {
    const auto tool = findProgram("dpkg-query", environment);
    const auto file = fileSystem::resolved(program);
    if (!tool || !file) return {};
    for (const auto& name : namesOf(*file)) {
        const auto package = owningPackage(query(*tool, {"-S", name}), name);
        if (package) return query(*tool, {"-W", "-f=${Version}", *package});
    }
    return {};
}

bool isToolkit(const std::string& library, std::initializer_list<std::string_view> names) {
    return std::any_of(names.begin(), names.end(),
                       [&](std::string_view name) { return library.starts_with(name); });
}

/// KDBusService(StartupOptions, QObject*)
constexpr const char* serviceOfKde = "_ZN12KDBusServiceC1E6QFlagsINS_13StartupOptionEEP7QObject";

/// Emacs looks for the image of its memory by its name, and ends without it.
bool actsByItsName(const Path& program, const Path& file) {
    const auto name = paths::lastComponent(file);
    return name != paths::lastComponent(program) || name.starts_with("emacs");
}

} // namespace

std::string signatureOf(const Path& program, const Environment& environment) {
    try {
        const auto system = systemName(osRelease());
        const auto version = upstreamSeries(packageVersion(program, environment));
        if (system.empty() || !version) return {};
        return system + " " + *version;
    } catch (const std::exception&) {
        // Without an answer nothing is known to have been tried here, and that is what is shown.
        return {};
    }
}

WindowNaming windowNamingOf(const Path& started, const Path& program) {
    const auto file = fileSystem::resolved(program);
    if (!file) return {};
    bool heedsResource = false;
    bool heedsName = false;
    for (const auto& library : linkedLibraries(*file)) {
        heedsResource = heedsResource || isToolkit(library, {"libXt.so", "libQtGui.so",
                                                             "libQt5Gui.so", "libQt6Gui.so"});
        heedsName = heedsName || isToolkit(library, {"libgtk-x11-2.0.so", "libgtk-3.so",
                                                     "libgtk-4.so", "libwx_gtk"});
    }
    WindowNaming naming;
    const bool isPassedOn = isNamingLauncher(started);
    naming.byProcessName = (heedsName || heedsResource) && (isPassedOn || !isScript(started)) &&
                           !actsByItsName(program, *file);
    if (heedsResource) naming.variables.emplace_back("RESOURCE_NAME"); // X Toolkit Intrinsics
    return naming;
}

std::vector<std::string> windowNameArguments(ambrel::AppEngine engine, const std::string& name) {
    using Engine = ambrel::AppEngine;
    if (engine == Engine::chromium) return {"--class=" + name};
    if (engine == Engine::firefox) return {"--class", name, "--name", name};
    return {};
}

std::vector<std::string> launcherVariables(const Path& started) {
    if (!isNamingLauncher(started)) return {};
    return {processNameVariable};
}

bool meetOnBus() noexcept { return true; }

bool isStarterByBus(const Path& program) { return paths::lastComponent(program) == busStarter; }

bool registersOnBus(const Path& program) {
    static const std::set<std::string> takers{
        "g_application_run",
        "g_application_register",
        "g_bus_own_name",
        "g_bus_own_name_on_connection",
        "dbus_bus_request_name",
        "_ZN3Gio11Application3runEiPPc",                    // Gio::Application::run(int, char**)
        "_ZN3Gtk11Application3runEiPPc",                    // Gtk::Application::run(int, char**)
        "_ZN15QDBusConnection15registerServiceERK7QString", // (const QString&)
        serviceOfKde};
    const auto file = fileSystem::resolved(program);
    return file && importsAny(*file, takers);
}

bool isServiceOnBus(const std::string& name, const ambrel::UserPlaces& user,
                    const Environment& environment) {
    const bool isName = !name.empty() && name.find('/') == std::string::npos &&
                        name.find('\0') == std::string::npos;
    const auto folders = programDataFolders(user, environment);
    return isName && std::ranges::any_of(folders, [&](const Path& folder) {
               return fileSystem::exists(
                   paths::join(folder, "dbus-1/services/" + name + ".service"));
           });
}

bool mayMeetBySocket(const Path& program) {
    const auto file = fileSystem::resolved(program);
    // QLocalServer::listen(QString); a name that is no path means one in the temporary folder.
    if (!file || !importsAny(*file, {"_ZN12QLocalServer6listenERK7QString"})) return false;
    return !importsAny(*file, {serviceOfKde});
}

ambrel::StringMap separatingVariables() { return {{"GSETTINGS_BACKEND", "keyfile"}}; }

ambrel::StringMap homeVariables(const Path& program) {
    if (!isJavaProgram(program)) return {};
    // The quotes are taken away by the machine, which takes the value apart at blanks.
    return {{"JAVA_TOOL_OPTIONS",
             "-Duser.home=\"" + std::string(ambrel::instanceHomePlaceholder) + "\""}};
}

} // namespace korvane::installedProgram
