#include "korvane/Verbs/CreateVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Operations/Creation.h"
#include "Manager/Programs/ProgramTraits.h"
#include "Manager/Rules/FieldEffect.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Remedies.h"
#include "korvane/Output/SystemWords.h"
#include "korvane/Verbs/CreateOptions.h"

#include <algorithm>
#include <memory>
#include <ostream>

namespace korvane {

using ambrel::ShortcutKind;

namespace {

/// Where instances have entries of their own, they alone show them.
bool hasDock() { return !registration::isOffered(); }

/// A command has its log in its home and nothing else, a document has no home.
bool keepsData(ShortcutKind kind) { return kind == ShortcutKind::app || kind == ShortcutKind::web; }

void declarePlaces(CLI::App& app, CreateOptions& given) {
    using options::text;
    if (isHeeded("instanceHome", given.kind)) {
        text(app, "--home", given.home,
             std::string(keepsData(given.kind) ? "The instance's data"
                                               : "The instance's own folder") +
                 " (default: ~/KorvaneInstances/NAME)")
            ->type_name("DIR");
    }
    text(app, "--output", given.output, "Where the bundle goes (default: ~/Applications)")
        ->type_name("DIR");
    text(app, "--bundle-id", given.bundleId, "The bundle's identifier (default: from the name)")
        ->type_name("ID");
    text(app, "--runner", given.runner, "The runner to put into the bundle")->type_name("FILE");
    options::flag(app, "--replace", given.replace,
                  "Replace the instance of this name; what is not given stays");
}

/// How it stands to the session's bus.
void declareBus(CLI::App& app, CreateOptions& given) {
    if (!installedProgram::meetOnBus()) return;
    options::choiceOf(app, "--shared-bus,!--no-shared-bus", given.sharedBus,
                      "Share your names on the session bus, or have names of its own there");
    options::choiceOf(app, "--hide-secrets,!--no-hide-secrets", given.hideSecrets,
                      "Hide the passwords that your session keeps, or share them");
}

void declareAppStart(CLI::App& app, CreateOptions& given) {
    using options::texts;
    options::choice<ambrel::Strategy>(app, "--strategy", given.strategy);
    texts(app, "--arg", given.args,
          "Give the application this argument, in place of those worked out for it");
    texts(app, "--add-arg", given.addArgs, "Give it this argument too");
    options::text(app, "--process-name", given.processName,
                  "Start the program by this name, which its windows get (Linux)")
        ->type_name("NAME");
    options::flag(app, "--no-profile", given.noProfile,
                  "Use neither the application's profile nor a name of their own for its windows");
    declareBus(app, given);
}

void declareCommandStart(CLI::App& app, CreateOptions& given) {
    options::text(app, "--working-directory", given.workingDirectory, "Where the command runs")
        ->type_name("DIR");
    options::flag(app, "--terminal", given.terminal, "Open it in a terminal's window");
}

void declareStart(CLI::App& app, CreateOptions& given) {
    if (given.kind == ShortcutKind::app) declareAppStart(app, given);
    if (isHeeded("environment", given.kind)) {
        options::texts(app, "--env", given.environment, "Set an environment variable")
            ->type_name("K=V");
    }
    if (isHeeded("shareUserFolders", given.kind)) {
        options::flag(app, "--no-share-folders", given.noShareFolders,
                      given.kind == ShortcutKind::web
                          ? "Put downloads into the home, not into your Downloads"
                          : "Do not link Downloads, Documents and Desktop into the home");
    }
    if (given.kind == ShortcutKind::command) declareCommandStart(app, given);
}

/// What an instance is offered for on the desktop.
void declareOffers(CLI::App& app, CreateOptions& given) {
    using options::choiceOf;
    if (isHeeded("registerAsBrowser", given.kind)) {
        choiceOf(app, "--browser,!--no-browser", given.browser,
                 "Offer the instance as a web browser, or not");
    }
    if (isHeeded("openWithPassthrough", given.kind)) {
        choiceOf(app, "--open-with,!--no-open-with", given.openWith,
                 "Offer the instance for opening documents, or not");
    }
}

void declareLook(CLI::App& app, CreateOptions& given) {
    using options::flag;
    using options::text;
    text(app, "--icon", given.icon, "An image for the icon")->type_name("FILE");
    if (hasDock()) {
        flag(app, "--hide-icon", given.hideIcon, std::string("Show no icon ") + systemWords.inDock);
    }
    text(app, "--label", given.label, "A text on the icon; an empty one for none");
    text(app, "--label-color", given.labelColor, "Its color (default: FFFFFF)")
        ->type_name("RRGGBB");
    options::choice<ambrel::IconLabel::Position>(app, "--label-position", given.labelPosition,
                                                 " (default: bottom)");
    options::texts(app, "--plist", given.plist, "Set an entry of the bundle's Info.plist")
        ->type_name("K=V");
    declareOffers(app, given);
    if (isHeeded("menuBarIcon", given.kind)) {
        flag(app, "--menu-bar", given.menuBar,
             std::string("Show an item ") + systemWords.inStatusArea + " while the instance runs");
        flag(app, "--menu-bar-template", given.menuBarTemplate,
             "The same in one color, that of the text beside it");
    }
    options::asJson(app, given.asJson);
}

/// What makes no difference here or to this kind, beside what another kind has.
std::vector<std::pair<std::string, std::string>> unofferedBy(ShortcutKind kind) {
    std::vector<std::pair<std::string, std::string>> unoffered;
    if (!hasDock()) {
        unoffered.emplace_back("--hide-icon",
                               "--hide-icon means nothing on this system, which has no Dock; an "
                               "instance leaves the menu with: korvane unregister NAME");
    }
    if (kind == ShortcutKind::app && !installedProgram::meetOnBus()) {
        for (const std::string option : {"--shared-bus", "--hide-secrets"}) {
            unoffered.emplace_back(option, option + " means nothing on this system, where programs "
                                                    "do not meet by name on a session bus.");
        }
    }
    if (kind != ShortcutKind::command) return unoffered;
    for (const std::string option : {"--arg", "--add-arg"}) {
        unoffered.emplace_back(option, option + " means nothing to a command: its arguments stand "
                                                "behind PROGRAM.");
    }
    return unoffered;
}

std::string spoken(ShortcutKind kind) {
    switch (kind) {
    case ShortcutKind::app:
        return "an application";
    case ShortcutKind::web:
        return "a web site";
    case ShortcutKind::file:
        return "a document";
    case ShortcutKind::command:
        return "a command";
    }
    return {};
}

/// What the instance was made with and may come of it, which is told after that it was made.
bool isOnOrigin(const Notice& notice) {
    using Kind = Notice::Kind;
    return notice.kind == Kind::profileUsed || notice.kind == Kind::profileIsBroken ||
           notice.kind == Kind::argumentsOfProfileUnused || notice.kind == Kind::keptOfReplaced ||
           notice.kind == Kind::droppedOfReplaced || notice.kind == Kind::homeExisted ||
           notice.kind == Kind::mayBeDefault;
}

void tellAboutHome(const Created& created, const Surroundings& surroundings) {
    const auto& home = created.record.config.instanceHome;
    const bool isElsewhere = std::ranges::any_of(created.notices, [](const Notice& notice) {
        return notice.kind == Notice::Kind::homeIsOverridden && notice.subject == "HOME";
    });
    if (keepsData(created.record.config.kind) && !isElsewhere) {
        say(surroundings, "Its data lives in " + ambrel::utf8::oneLine(home) +
                              (created.homeExisted ? ", with what was there already." : "."));
    }
    if (created.replaced && created.replaced->config.instanceHome != home) {
        say(surroundings, "The replaced instance's data stays in " +
                              ambrel::utf8::oneLine(created.replaced->config.instanceHome) + ".");
    }
}

/// Whether opening it now can succeed, as far as was said.
bool canBeOpened(const Created& created) {
    using Kind = Notice::Kind;
    return std::ranges::none_of(created.notices, [](const Notice& notice) {
        return notice.kind == Kind::engineIsMissing || notice.kind == Kind::strategyIsUnsupported ||
               notice.kind == Kind::nothingAtPath;
    });
}

void tellAbout(const Created& created, const Surroundings& surroundings) {
    for (const auto& notice : created.notices) {
        if (!isOnOrigin(notice)) tell(surroundings, notice);
    }
    say(surroundings, (created.replaced ? "Replaced " : "Created ") +
                          inQuotes(created.record.config.displayName) + ".");
    for (const auto& notice : created.notices) {
        if (isOnOrigin(notice)) tell(surroundings, notice);
    }
    tellAboutHome(created, surroundings);
    if (!canBeOpened(created)) return;
    say(surroundings, "Open it with: " + commandLine("open", {created.reference}));
}

int createInstance(const CreateOptions& options, const Surroundings& surroundings) {
    const auto created =
        create(requestFrom(options, surroundings), surroundings.user, surroundings.environment);
    tellAbout(created, surroundings);
    if (options.asJson) {
        auto object = json::instance(created.record, surroundings.user);
        if (created.profile) object["profile"] = json::profile(*created.profile);
        if (created.adopted) object["adopted"] = json::text(*created.adopted);
        json::write(object, surroundings.results);
    } else {
        surroundings.results << created.record.bundleURL << '\n';
    }
    return 0;
}

/// What stands behind a program is the program's, however much it looks like an option of ours.
void tellOfOptionsGivenOn(const CLI::App& app, const std::vector<std::string>& arguments,
                          const Surroundings& surroundings) {
    for (const auto& argument : arguments) {
        const bool isLong = argument.starts_with("--") && argument.size() > 2;
        if (!isLong || app.get_option_no_throw(argument) == nullptr) continue;
        say(surroundings, inQuotes(argument) +
                              " stands behind the program and is given to it; an option of korvane "
                              "stands in front of it.");
    }
}

} // namespace

Verb createVerb(ShortcutKind kind, const std::string& subject, const std::string& subjectHelp) {
    Verb verb;
    verb.name = "create " + std::string(rawValue(kind));
    verb.about = spoken(kind);
    verb.unoffered = unofferedBy(kind);
    verb.declare = [=](CLI::App& app, const Surroundings& surroundings) -> Action {
        const auto given = std::make_shared<CreateOptions>();
        given->kind = kind;
        options::text(app, "NAME", given->name, "What the instance is called")->required();
        options::text(app, subject, given->subject, subjectHelp)->required();
        declarePlaces(app, *given);
        declareStart(app, *given);
        declareLook(app, *given);
        return [given, &app, &surroundings](const std::vector<std::string>& trailing) {
            given->commandArgs = trailing;
            const auto status = createInstance(*given, surroundings);
            tellOfOptionsGivenOn(app, trailing, surroundings);
            return status;
        };
    };
    return verb;
}

} // namespace korvane
