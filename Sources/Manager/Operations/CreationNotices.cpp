#include "Manager/Operations/CreationNotices.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/ProcessName.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Operations/IconOrigin.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::ShortcutKind;
using ambrel::UserPlaces;
using Kind = Notice::Kind;

namespace {

class NoticeList {
public:
    void add(Kind kind, std::string subject, std::string sentence, Remedy remedy = Remedy::none) {
        found.push_back({.kind = kind,
                         .subject = std::move(subject),
                         .sentence = std::move(sentence),
                         .remedy = remedy});
    }
    void inform(Kind kind, std::string subject, std::string sentence) {
        add(kind, std::move(subject), std::move(sentence));
        found.back().severity = Notice::Severity::information;
    }
    std::vector<Notice> found;
};

void addTarget(const ambrel::AppBundle& target, NoticeList& list) {
    const std::string subject{ambrel::paths::stem(target.url)};
    const auto name = inQuotes(subject);
    if (target.sandboxed) {
        list.add(Kind::targetIsSandboxed, subject,
                 name + " is sandboxed: the system keeps its data in a container of its own, so "
                        "its data and settings will not be kept apart.");
    }
    if (target.prohibitsMultipleInstances) {
        list.add(Kind::targetRunsOnce, subject,
                 name + " allows only one running copy: while one runs, opening another may lead "
                        "to that one, and what you do there will not be kept apart.");
    }
}

/// What names of its own on the session bus do not keep apart.
void addMeeting(const CreationPlan& plan, const std::string& subject, NoticeList& list) {
    const auto& meeting = plan.start->meeting;
    const auto name = inQuotes(subject);
    const bool hasOwnFolder = plan.wrapper.environment.contains("TMPDIR");
    if (meeting.bySocket && !hasOwnFolder) {
        list.add(Kind::meetsBySocket, subject,
                 name + " has a socket by which it may hand over to a copy that runs: in the "
                        "temporary folder it is not kept apart, unless the variable TMPDIR names "
                        "another one for the instance.");
    }
    if (meeting.byWindow) {
        list.add(Kind::meetsByWindow, subject,
                 name + " is an Eclipse program, whose launcher may hand files over to the window "
                        "of a copy that runs: on X11 that is not kept apart.");
    }
    if (meeting.unseen) {
        list.inform(Kind::mayMeetUnseen, subject,
                    "Whether a Java program hands over to a copy that runs cannot be told: by its "
                    "window, a port or a file in the temporary folder " +
                        name + " is not kept apart.");
    }
}

/// `made` says how the instance stands to the session's bus, which the plan's profile need not.
void addStart(const CreationPlan& plan, const InstanceRecord& made, NoticeList& list) {
    const auto& start = *plan.start;
    const std::string subject{ambrel::paths::stem(plan.target->url)};
    const auto name = inQuotes(subject);
    auto obstacle = busObstacle(start, *plan.target, made.config);
    if (obstacle) list.found.push_back(std::move(*obstacle));
    auto standing = busStanding(made.config.infoPlistOverrides, made.config.environment, start.bus);
    // Names of the profile's go with the sharing, and nobody has asked for them.
    if (!plan.request.infoPlistOverrides.contains(ambrel::busNamesKey)) standing.sharedNames = {};
    append(list.found, noticesOnUnheeded(standing));
    if (start.asksAccountForHome) {
        list.inform(Kind::homeFromAccount, subject,
                    name + " is a Java program, which asks the account for the home: the instance "
                           "tells it its own by JAVA_TOOL_OPTIONS.");
    }
    addMeeting(plan, subject, list);
    const bool isNamed = !start.keepsWindowName || processNameOf(plan.request);
    if (!isNamed && ambrel::processNameNamesWindows()) {
        list.inform(Kind::windowsKeepName, subject,
                    "Its windows keep the name of " + name +
                        " in dock and task list: nothing is known that gives them another.");
    }
}

void addMissingHosts(const CreationPlan& plan, NoticeList& list) {
    if (const auto& package = plan.missingPackage) {
        list.add(Kind::engineIsMissing, *package,
                 "Its window needs the package " + *package +
                     ", which is not installed: opening this instance will fail until it is.");
    }
}

void addPaths(const CreateRequest& request, const UserPlaces& user, NoticeList& list) {
    const auto check = [&](const Path& path) {
        const auto place = user.expandingTilde(path);
        if (path.empty() || ambrel::fileSystem::exists(place)) return;
        list.add(Kind::nothingAtPath, place, ambrel::utf8::oneLine(place) + " does not exist now.");
    };
    if (request.kind == ShortcutKind::file) check(request.openPath);
    check(request.workingDirectory.value_or(""));
}

void addHome(const InstanceRecord& made, const UserPlaces& user, NoticeList& list) {
    if (!hasHome(made.config)) return;
    const auto home = usableHome(made.config, user).value_or("");
    if (auto obstacle = homeObstacle(home)) list.found.push_back(std::move(*obstacle));
    if (auto obstacle = privacyObstacle(made.config, user)) {
        list.found.push_back(std::move(*obstacle));
    }
}

void addStrategy(const CreationPlan& plan, NoticeList& list) {
    const bool isRefused = plan.request.kind == ShortcutKind::app &&
                           plan.wrapper.strategy == ambrel::Strategy::unsupported;
    if (!isRefused) return;
    list.add(Kind::strategyIsUnsupported, "",
             "Its strategy is \"unsupported\": opening it will fail.");
}

} // namespace

std::optional<Notice> busObstacle(const StartPlan& start, const ambrel::AppBundle& target,
                                  const ambrel::InstanceConfig& config) {
    const auto standing = busStanding(config.infoPlistOverrides, config.environment, start.bus);
    if (!start.mayHandOver || standing.hasOwnNames()) return std::nullopt;
    const std::string subject{ambrel::paths::stem(target.url)};
    return Notice{.kind = Kind::handsOverToRunningCopy,
                  .subject = subject,
                  .sentence = inQuotes(subject) +
                              " registers on the session bus: while another copy runs, this "
                              "instance may hand over to that, and will not be kept apart then; "
                              "your own copy may hand over to the instance too."};
}

std::vector<Notice> noticesOn(const CreationPlan& plan, const InstanceRecord& made,
                              const UserPlaces& user) {
    NoticeList list;
    if (plan.target) addTarget(*plan.target, list);
    if (plan.start) addStart(plan, made, list);
    addMissingHosts(plan, list);
    if (auto obstacle = labelObstacle(made)) list.found.push_back(std::move(*obstacle));
    addPaths(plan.request, user, list);
    addStrategy(plan, list);
    addHome(made, user, list);
    append(list.found, noticesOnOverriding(made.config, nullptr, user));
    return std::move(list.found);
}

namespace {

/// Given arguments take the place of the profile's, which is then used for the rest alone.
void addProfile(const CreationPlan& plan, const ProgramProfile& profile, NoticeList& list) {
    const bool isBroken = profile.profile.confidence == ambrel::Confidence::broken;
    const bool isUsed = plan.request.args.empty() || profile.profile.extraArgs.empty();
    if (isUsed || isBroken) {
        list.add(isBroken ? Kind::profileIsBroken : Kind::profileUsed, profile.file,
                 profileSentence(*plan.start));
    } else {
        list.add(Kind::argumentsOfProfileUnused, profile.file,
                 "Used the arguments given, in place of those in the profile of " +
                     inQuotes(profile.profile.displayName) + ".");
    }
    if (!isBroken) list.found.back().severity = Notice::Severity::information;
}

std::string listed(const std::vector<std::string>& parts) {
    std::string list;
    for (const auto& part : parts) list += (list.empty() ? "" : ", ") + part;
    return list;
}

void addKept(const CreationPlan& plan, const Created& created, NoticeList& list) {
    auto kept = plan.parts.kept;
    if (created.iconKept) kept.emplace_back("its icon");
    if (!kept.empty()) {
        list.inform(Kind::keptOfReplaced, created.reference,
                    "Kept of what was there: " + listed(kept) + ".");
    }
    if (plan.parts.dropped.empty()) return;
    list.inform(Kind::droppedOfReplaced, created.reference,
                "Not kept, because an earlier profile had given it: " + listed(plan.parts.dropped) +
                    ".");
}

} // namespace

std::vector<Notice> noticesOnOrigin(const CreationPlan& plan, const Created& created) {
    NoticeList list;
    addKept(plan, created, list);
    if (created.profile) addProfile(plan, *created.profile, list);
    const bool isUsed = hasHome(created.record.config);
    if (isUsed && created.homeExisted && !created.replaced && !plan.request.home) {
        list.add(Kind::homeExisted, created.record.config.instanceHome,
                 "Its home was there before, perhaps as that of another instance.",
                 Remedy::chooseHome);
    }
    return std::move(list.found);
}

} // namespace korvane
