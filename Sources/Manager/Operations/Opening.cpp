#include "Manager/Operations/Opening.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Launch/LaunchCheck.h"
#include "Ambrel/Launch/OpenedItems.h"
#include "Ambrel/Platform/ChildEnd.h"
#include "Ambrel/Platform/DetachedProcess.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/OutputFile.h"
#include "Ambrel/Platform/Processes.h"
#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Programs/Adoption.h"
#include "Manager/Programs/SessionBus.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/MissingTarget.h"
#include "Manager/Rules/Running.h"

#include <algorithm>

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::LaunchError;
using ambrel::LaunchObstacle;
using ambrel::OutputFile;
using ambrel::Path;
using ambrel::ResolvedInstance;
using ambrel::ShortcutKind;
using ambrel::UserPlaces;
namespace {

std::string sentenceOn(const LaunchObstacle& obstacle, const std::string& name) {
    using Kind = LaunchObstacle::Kind;
    const auto place = ambrel::utf8::oneLine(obstacle.subject);
    switch (obstacle.kind) {
    case Kind::noRunner:
        return "The instance " + inQuotes(name) + " is damaged: there is no runner at " + place +
               ".";
    case Kind::documentMissing:
        return "The document is not there: " + place;
    case Kind::commandNotRunnable:
        return "The command cannot be run: " + place;
    case Kind::folderMissing:
        return "The working directory is not there: " + place;
    case Kind::programNotRunnable:
        return "The application's program cannot be run: " + place;
    // The rest in the runner's own words.
    case Kind::noDocument:
        return LaunchError::unsupported("file shortcut has no target path").description();
    case Kind::noCommand:
        return LaunchError::unsupported("command shortcut has no executable").description();
    case Kind::badBundle:
        return LaunchError::badBundle(obstacle.subject).description();
    case Kind::unsupported:
        return LaunchError::unsupported(obstacle.subject).description();
    }
    return {};
}

Refusal::Kind kindOf(LaunchObstacle::Kind obstacle) {
    using Obstacle = LaunchObstacle::Kind;
    if (obstacle == Obstacle::noRunner) return Refusal::Kind::damagedInstance;
    if (obstacle == Obstacle::badBundle) return Refusal::Kind::unreadableApplication;
    return Refusal::Kind::notLaunchable;
}

void requireNone(const std::optional<LaunchObstacle>& obstacle, const InstanceRecord& record) {
    if (!obstacle) return;
    const bool isDamage = obstacle->kind == LaunchObstacle::Kind::noRunner;
    throw Refusal(kindOf(obstacle->kind), isDamage ? record.bundleURL : obstacle->subject,
                  ambrel::utf8::oneLine(sentenceOn(*obstacle, record.config.displayName)),
                  isDamage ? Remedy::createAgain : Remedy::none);
}

/// An application that was made of an installed program is made of it again where it has gone.
void requireAdopted(const InstanceRecord& record, const UserPlaces& user) {
    if (record.config.kind != ShortcutKind::app || !adoptionIsOffered()) return;
    const auto app = missingTarget(record, user);
    if (!app) return;
    const bool isUsual = ambrel::paths::deletingLastComponent(*app) ==
                         ambrel::WrapperFactory::defaultOutputDir(user);
    throw Refusal(Refusal::Kind::unreadableApplication, *app,
                  "The application is not there any more: " + ambrel::utf8::oneLine(*app) + ".",
                  isUsual ? Remedy::adoptAgain : Remedy::none);
}

/// An application and a command start without a home too, and say why they do not. Without one
/// their complaints go nowhere else than to whoever starts them.
void tryMakeHome(const InstanceRecord& record, const UserPlaces& user) noexcept {
    try {
        ambrel::NewFolders folders;
        makeHome(record.config, user, folders);
        folders.keep();
    } catch (const std::exception&) {
    }
}

/// The runner's arguments for an instance that is to open `words`.
std::vector<std::string> requireArguments(const InstanceRecord& record,
                                          const std::vector<std::string>& words) {
    if (words.empty()) return {};
    if (record.config.kind != ambrel::ShortcutKind::app) {
        throw Refusal(Refusal::Kind::hasNoEffect, words.front(),
                      "Only an instance of an application can be given something to open: " +
                          inQuotes(record.config.displayName) + " is none.");
    }
    if (std::ranges::find(words, "") != words.end()) {
        throw Refusal(Refusal::Kind::badPath, "", "The name of a file to open is empty.");
    }
    std::vector<std::string> arguments{std::string(ambrel::openArgument)};
    for (auto& item : ambrel::openedItems(words)) arguments.push_back(std::move(item));
    return arguments;
}

Path requireRunner(const InstanceRecord& record) {
    requireNone(ambrel::findRunnerObstacle(record.bundleURL), record);
    return ambrel::BundleLayout{record.bundleURL}.runner();
}

/// Whether what a start writes belongs into the log. That of a web instance holds what its page
/// said, and nothing of an engine's complaints.
bool isLogged(ShortcutKind kind) {
    return kind == ShortcutKind::app || kind == ShortcutKind::command;
}

/// What the start is to write to: the log, so that it is found there later, where there is one.
std::optional<OutputFile> tryOpenOutput(const InstanceRecord& record, const UserPlaces& user) {
    const auto home = usableHome(record.config, user);
    if (home && isLogged(record.config.kind)) {
        try {
            return OutputFile::appendingTo(
                ambrel::paths::join(*home, ambrel::InstanceLauncher::instanceLogName));
        } catch (const ambrel::FileError&) {
            // As the launcher does: a program runs without its log too.
        }
    }
    try {
        return OutputFile::unnamed();
    } catch (const ambrel::FileError&) {
        return std::nullopt; // nothing can be told of a failure but its status
    }
}

/// The last lines of `text`, each safe to show.
std::vector<std::string> lastLines(std::string_view text) {
    constexpr std::size_t mostLines = 10;
    std::vector<std::string> lines;
    while (!text.empty() && lines.size() < mostLines) {
        const auto end = text.find_last_not_of('\n');
        if (end == std::string_view::npos) break;
        text = text.substr(0, end + 1);
        const auto start = text.rfind('\n') + 1; // 0 where there is none
        lines.push_back(ambrel::utf8::oneLine(text.substr(start)));
        text = text.substr(0, start);
    }
    std::ranges::reverse(lines);
    return lines;
}

/// One start, from before it to the end of the look at it.
class Start {
public:
    Start(const InstanceRecord& record, const UserPlaces& user)
        : record_(record), user_(user), before_(look()), output_(tryOpenOutput(record, user)) {}

    Opened run(const Path& runner, const std::vector<std::string>& arguments,
               std::chrono::milliseconds looking) {
        const auto child =
            ambrel::launchDetached(runner, arguments, output_ ? output_->descriptor() : nullptr);
        const bool isDocument = record_.config.kind == ShortcutKind::file;
        if (!ambrel::ChildEnd(child).wait(looking)) {
            return isDocument ? Opened::handedOn : Opened::runs;
        }
        const int status = child.terminationStatus();
        if (status != 0) {
            const auto what = isDocument ? "was not opened: its opener ended with status "
                                         : "ended at once with status ";
            throw endedAtOnce(what + std::to_string(status), Remedy::none);
        }
        if (isDocument) return Opened::handedOn;
        if (programRuns()) return before_.hasProgram ? Opened::ranAlready : Opened::runs;
        if (record_.config.kind != ShortcutKind::app) return Opened::ended;
        throw endedAtOnce("ended at once with status 0, and nothing of it runs: it may have handed "
                          "over to a copy of its program that runs outside the instance" +
                              std::string(sharesBus() ? whySharing : ""),
                          Remedy::keepApart);
    }

private:
    static constexpr const char* whySharing =
        ", with which it shares the names on the session bus (sharedBus)";

    bool sharesBus() const {
        return busChoice(record_.config.infoPlistOverrides, ambrel::sharedBusKey).value_or(false);
    }

    RunningProcesses look() const { return Running::now(user_).of(record_); }

    /// What serves a program on the session bus stays for a moment after it, and for longer where
    /// somebody has windows by it: that is waited for.
    bool programRuns() const {
        constexpr std::chrono::seconds longest(5);
        const auto deadline = ambrel::ProcessHandle::Clock::now() + longest;
        while (true) {
            std::vector<ambrel::ProcessHandle> held;
            for (const int id : look().ids) {
                if (isNew(id)) addHandle(id, held);
            }
            const auto found = look();
            if (found.hasProgram) return true;
            if (std::ranges::none_of(found.ids, [this](int id) { return isNew(id); })) return false;
            const bool isTooLate = ambrel::ProcessHandle::Clock::now() >= deadline;
            if (isTooLate) return true;
            if (held.empty()) continue; // it came between the two looks
            if (!ambrel::ProcessHandle::waitForAny(held, deadline)) return true;
        }
    }

    bool isNew(int id) const { return std::ranges::find(before_.ids, id) == before_.ids.end(); }

    static void addHandle(int id, std::vector<ambrel::ProcessHandle>& held) {
        if (auto process = ambrel::ProcessHandle::open(id)) held.push_back(std::move(*process));
    }

    Refusal endedAtOnce(const std::string& what, Remedy remedy) const {
        constexpr std::size_t enoughForLines = 65536;
        return {Refusal::Kind::endedAtOnce, nameFor(record_, user_),
                inQuotes(record_.config.displayName) + " " + what + ".", remedy,
                output_ ? lastLines(output_->written(enoughForLines)) : std::vector<std::string>()};
    }

    const InstanceRecord& record_;
    const UserPlaces& user_;
    RunningProcesses before_;
    std::optional<OutputFile> output_;
};

} // namespace

Path prepareRun(const InstanceRecord& record, const UserPlaces& user) {
    auto runner = requireRunner(record);
    ensureHome(record.config, user);
    return runner;
}

void requireOpenable(const InstanceRecord& record, const UserPlaces& user) {
    requireRunner(record);
    requireAdopted(record, user);
    requireNone(ambrel::findLaunchObstacle(ResolvedInstance::of(record.config, user)), record);
}

Opened open(const InstanceRecord& record, const UserPlaces& user, const OpenRequest& request) {
    const auto arguments = requireArguments(record, request.words);
    requireOpenable(record, user);
    const auto runner = prepareRun(record, user);
    if (record.config.kind != ShortcutKind::file) tryMakeHome(record, user);
    return Start(record, user).run(runner, arguments, request.looking);
}

} // namespace korvane
