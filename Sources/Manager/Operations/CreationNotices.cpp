#include "Manager/Operations/CreationNotices.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/ProcessName.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Files/IconConversion.h"
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

void addStart(const CreationPlan& plan, NoticeList& list) {
    const auto& start = *plan.start;
    const std::string subject{ambrel::paths::stem(plan.target->url)};
    const auto name = inQuotes(subject);
    if (start.mayHandOver) {
        list.add(Kind::handsOverToRunningCopy, subject,
                 name + " registers on the session bus: while another copy runs, this instance may "
                        "hand over to that, and will not be kept apart then.");
    }
    if (start.asksAccountForHome) {
        list.inform(Kind::homeFromAccount, subject,
                    name + " is a Java program, which asks the account for the home: the instance "
                           "tells it its own by JAVA_TOOL_OPTIONS.");
    }
    const bool isNamed = !start.keepsWindowName || processNameOf(plan.request);
    if (!isNamed && ambrel::processNameNamesWindows()) {
        list.inform(Kind::windowsKeepName, subject,
                    "Its windows keep the name of " + name +
                        " in dock and task list: nothing is known that gives them another.");
    }
}

/// Some fields are stored for every kind and used by few.
void addUnusedFields(const CreateRequest& request, NoticeList& list) {
    const auto tell = [&](bool given, const std::string& field, Remedy remedy = Remedy::none) {
        if (!given) return;
        list.add(Kind::fieldIsUnused, field,
                 field + " is stored, but means nothing to an instance of the kind " +
                     std::string(rawValue(request.kind)) + ".",
                 remedy);
    };
    const bool isApp = request.kind == ShortcutKind::app;
    const bool isCommand = request.kind == ShortcutKind::command;
    const auto remedy = isCommand ? Remedy::moveToCommandArguments : Remedy::none;
    tell(!isApp && !request.args.empty(), "args", remedy);
    tell(!isApp && !request.addedArgs.empty(), "addedArgs", remedy);
    tell(!isApp && request.strategy, "strategy");
    tell(!isApp && !request.shareUserFolders, "shareUserFolders");
    tell(!isApp && !isCommand && !request.environment.empty(), "environment");
    tell(!isCommand && request.workingDirectory, "workingDirectory");
    tell(!isApp && request.processName, "processName");
    tell(!isApp && request.useProfile == UseProfile::no, "useProfile");
}

void addMissingHosts(const CreateRequest& request, NoticeList& list) {
    if (request.kind == ShortcutKind::web) {
        list.add(Kind::webIsNotHosted, "",
                 "The runner cannot host web sites yet: opening this instance will fail.");
    }
    if (request.menuBarIcon) {
        list.add(Kind::menuBarIsNotHosted, "",
                 "The runner cannot host menu-bar items yet: this instance will run without one.");
    }
}

void addLabel(const InstanceRecord& made, NoticeList& list) {
    const auto& label = made.config.iconLabel;
    if (!label) return;
    if (!ambrel::fileSystem::exists(ambrel::BundleLayout{made.bundleURL}.icon())) {
        list.add(Kind::labelWithoutIcon, "", "There is no icon to draw the label on.",
                 Remedy::chooseIcon);
    } else if (const auto obstacle = obstacleTo(*label)) {
        list.add(Kind::labelNotDrawn, label->text, *obstacle);
    }
}

void addPaths(const CreateRequest& request, const UserPlaces& user, NoticeList& list) {
    const auto check = [&](const Path& path, bool mustRun) {
        if (path.empty()) return;
        const auto place = user.expandingTilde(path);
        const bool fits = mustRun ? ambrel::fileSystem::isExecutableFile(place)
                                  : ambrel::fileSystem::exists(place);
        if (fits) return;
        list.add(mustRun ? Kind::notRunnableAtPath : Kind::nothingAtPath, place,
                 ambrel::utf8::oneLine(place) +
                     (mustRun ? " is no program that can be run now." : " does not exist now."));
    };
    if (request.kind == ShortcutKind::file) check(request.openPath, false);
    if (request.kind == ShortcutKind::command) check(request.commandPath, true);
    check(request.workingDirectory.value_or(""), false);
}

void addHome(const InstanceRecord& made, const UserPlaces& user, NoticeList& list) {
    const auto home = usableHome(made.config, user).value_or("");
    if (auto obstacle = homeObstacle(home)) list.found.push_back(std::move(*obstacle));
    if (isPrivateHome(made.config, user)) return;
    list.add(Kind::homeIsNotPrivate, home,
             "Its home " + ambrel::utf8::oneLine(home) +
                 " is or contains your own: nothing is prepared in it.");
}

void addStrategy(const CreationPlan& plan, NoticeList& list) {
    const bool isRefused = plan.request.kind == ShortcutKind::app &&
                           plan.wrapper.strategy == ambrel::Strategy::unsupported;
    if (!isRefused) return;
    list.add(Kind::strategyIsUnsupported, "",
             "Its strategy is \"unsupported\": opening it will fail.");
}

} // namespace

std::vector<Notice> noticesOn(const CreationPlan& plan, const InstanceRecord& made,
                              const UserPlaces& user) {
    NoticeList list;
    if (plan.target) addTarget(*plan.target, list);
    if (plan.start) addStart(plan, list);
    addUnusedFields(plan.request, list);
    addMissingHosts(plan.request, list);
    addLabel(made, list);
    addPaths(plan.request, user, list);
    addStrategy(plan, list);
    addHome(made, user, list);
    return std::move(list.found);
}

std::vector<Notice> noticesOnOrigin(const CreationPlan& plan, const Created& created) {
    NoticeList list;
    if (created.profile) {
        const bool isBroken = created.profile->profile.confidence == ambrel::Confidence::broken;
        list.add(isBroken ? Kind::profileIsBroken : Kind::profileUsed, created.profile->file,
                 profileSentence(*plan.start));
        if (!isBroken) list.found.back().severity = Notice::Severity::information;
    }
    if (created.homeExisted && !created.replaced && !plan.request.home) {
        list.add(Kind::homeExisted, created.record.config.instanceHome,
                 "Its home was there before, perhaps as that of another instance.",
                 Remedy::chooseHome);
    }
    return std::move(list.found);
}

} // namespace korvane
