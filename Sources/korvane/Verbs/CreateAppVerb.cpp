#include "korvane/Verbs/CreateAppVerb.h"

#include "korvane/Verbs/CreateVerb.h"

namespace korvane {

Verb createAppVerb() {
    auto verb =
        createVerb(ambrel::ShortcutKind::app, "APP",
                   "An application or installed program: its name in the menu, a desktop id, a "
                   "command, a path, or a name or identifier that \"korvane apps\" lists");
    verb.summary = "Make an isolated copy of an application.";
    verb.examples = {"korvane create app Work chromium",
                     "korvane create app Work ~/Applications/Chromium.app --add-arg --incognito",
                     "korvane create app Work org.mozilla.firefox --home ~/Work --replace"};
    return verb;
}

} // namespace korvane
