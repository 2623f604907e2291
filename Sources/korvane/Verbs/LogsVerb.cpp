#include "korvane/Verbs/LogsVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/FileWatch.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"

#include <cerrno>
#include <fstream>
#include <ostream>

namespace korvane {

using ambrel::FileWatch;
using ambrel::Path;

namespace {

constexpr int standardOutput = 1;

/// Writes what the log holds behind `position` and returns where it ends now. A log that became
/// shorter is written from its start.
std::streamoff writeFrom(const Path& log, std::streamoff position, std::ostream& out) {
    std::ifstream file(log, std::ios::binary);
    if (!file) {
        if (ambrel::fileSystem::isMissing(log)) return 0; // it may begin any moment
        throw ambrel::FileError("read", log, errno);
    }
    file.seekg(0, std::ios::end);
    if (file.tellg() < position) position = 0;
    file.seekg(position);
    char buffer[65536];
    while (file.read(buffer, sizeof buffer) || file.gcount() > 0) {
        out.write(buffer, file.gcount());
        position += file.gcount();
    }
    out.flush();
    return position;
}

void follow(const Path& home, const Path& log, std::ostream& out) {
    FileWatch watch(home, std::string(ambrel::InstanceLauncher::instanceLogName));
    auto position = writeFrom(log, 0, out);
    while (out && watch.wait(standardOutput) == FileWatch::Event::changed) {
        position = writeFrom(log, position, out);
    }
}

int logs(const std::string& name, bool following, const Surroundings& surroundings) {
    const auto record = requireInstance(name, surroundings.user);
    const auto home = usableHome(record.config, surroundings.user);
    if (!home) throw Refusal("The instance has no home folder, and so no log.");
    const auto log = ambrel::paths::join(*home, ambrel::InstanceLauncher::instanceLogName);
    if (record.config.kind == ambrel::ShortcutKind::file) {
        throw Refusal("A document is opened by another program, so that this instance has no log.");
    }
    if (ambrel::fileSystem::isMissing(log) &&
        (!following || !ambrel::fileSystem::isFolder(*home))) {
        throw Refusal("There is no log yet at " + ambrel::utf8::oneLine(log) +
                      ". It begins with: " + commandLine("open", {name}));
    }
    if (following) {
        follow(*home, log, surroundings.results);
    } else {
        writeFrom(log, 0, surroundings.results);
    }
    return 0;
}

} // namespace

Verb logsVerb() {
    return {"logs",
            "Show what an instance has written.",
            {"korvane logs Work", "korvane logs Work -f"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                struct Given {
                    std::string name;
                    bool following = false;
                };
                const auto given = std::make_shared<Given>();
                options::instanceName(app, given->name);
                options::flag(app, "-f,--follow", given->following, "Go on as more is written");
                return [given, &surroundings](const auto&) {
                    return logs(given->name, given->following, surroundings);
                };
            }};
}

} // namespace korvane
