#include "korvane/Verbs/CreateVerbs.h"

#include "korvane/CommandLine/Options.h"
#include "korvane/Verbs/InstanceMaker.h"

namespace korvane {

using ambrel::ShortcutKind;

namespace {

void declarePlaces(CLI::App& app, CreateOptions& given) {
    using options::text;
    text(app, "--home", given.home, "The instance's data (default: ~/KorvaneInstances/NAME)")
        ->type_name("DIR");
    text(app, "--output", given.output, "Where the bundle goes (default: ~/Applications)")
        ->type_name("DIR");
    text(app, "--bundle-id", given.bundleId, "The bundle's identifier (default: from the name)")
        ->type_name("ID");
    text(app, "--runner", given.runner, "The runner to put into the bundle")->type_name("FILE");
    options::flag(app, "--replace", given.replace, "Replace the instance of this name");
}

void declareStart(CLI::App& app, CreateOptions& given) {
    using options::text;
    using options::texts;
    options::choice<ambrel::Strategy>(app, "--strategy", given.strategy);
    texts(app, "--arg", given.args,
          "Give the application this argument, in place of those worked out for it");
    texts(app, "--add-arg", given.addArgs, "Give it this argument too");
    texts(app, "--env", given.environment, "Set an environment variable")->type_name("K=V");
    text(app, "--process-name", given.processName,
         "Start the program by this name, which its windows get (Linux)")
        ->type_name("NAME");
    options::flag(app, "--no-profile", given.noProfile,
                  "Use neither the application's profile nor a name of their own for its windows");
    text(app, "--working-directory", given.workingDirectory, "Where a command runs")
        ->type_name("DIR");
    options::flag(app, "--no-share-folders", given.noShareFolders,
                  "Do not link Downloads, Documents and Desktop into the home");
}

void declareLook(CLI::App& app, CreateOptions& given) {
    using options::flag;
    using options::text;
    text(app, "--icon", given.icon, "An image for the icon")->type_name("FILE");
    flag(app, "--hide-icon", given.hideIcon, "Show no icon in the Dock");
    text(app, "--label", given.label, "A text on the icon");
    text(app, "--label-color", given.labelColor, "Its color (default: FFFFFF)")
        ->type_name("RRGGBB");
    options::choice<ambrel::IconLabel::Position>(app, "--label-position", given.labelPosition,
                                                 " (default: bottom)");
    options::texts(app, "--plist", given.plist, "Set an entry of the bundle's Info.plist")
        ->type_name("K=V");
    flag(app, "--browser", given.browser, "Offer the instance as a web browser");
    flag(app, "--open-with", given.openWith, "Offer the instance for opening documents");
    flag(app, "--menu-bar", given.menuBar, "Show an item in the menu bar");
    flag(app, "--menu-bar-template", given.menuBarTemplate, "Draw that item as a template image");
    flag(app, "--json", given.asJson, "Write JSON");
}

Verb createVerb(ShortcutKind kind, std::string summary, std::vector<std::string> examples,
                const std::string& subject, const std::string& subjectHelp) {
    Verb verb;
    verb.name = "create " + std::string(rawValue(kind));
    verb.summary = std::move(summary);
    verb.examples = std::move(examples);
    verb.declare = [=](CLI::App& app, const Surroundings& surroundings) -> Action {
        const auto given = std::make_shared<CreateOptions>();
        given->kind = kind;
        options::text(app, "NAME", given->name, "What the instance is called")->required();
        options::text(app, subject, given->subject, subjectHelp)->required();
        declarePlaces(app, *given);
        declareStart(app, *given);
        declareLook(app, *given);
        return [given, &surroundings](const std::vector<std::string>& trailing) {
            given->commandArgs = trailing;
            makeInstance(*given, surroundings);
            return 0;
        };
    };
    return verb;
}

} // namespace

Verb createAppVerb() {
    return createVerb(ShortcutKind::app, "Make an isolated copy of an application.",
                      {"korvane create app Work \"Chromium Web Browser\"",
                       "korvane create app Work ~/Applications/Chromium.app --add-arg --incognito",
                       "korvane create app Work org.mozilla.firefox --home ~/Work --replace"},
                      "APP",
                      "The bundle's path, or a name or identifier that \"korvane apps\" lists");
}

Verb createWebVerb() {
    return createVerb(ShortcutKind::web, "Make an application of a web site.",
                      {"korvane create web Mail https://mail.example.org/"}, "URL",
                      "The site's address");
}

Verb createFileVerb() {
    return createVerb(ShortcutKind::file, "Make an application of a document or folder.",
                      {"korvane create file Report ~/Documents/report.pdf"}, "PATH",
                      "What to open");
}

Verb createCommandVerb() {
    auto verb = createVerb(ShortcutKind::command, "Make an application of a command.",
                           {"korvane create command Backup rsync -- -a /data /backup",
                            "korvane create command Server ./serve --env PORT=8080"},
                           "PROGRAM", "A program's path, or a name to look up in PATH now");
    verb.rules.trailingAfter = 2;
    return verb;
}

} // namespace korvane
