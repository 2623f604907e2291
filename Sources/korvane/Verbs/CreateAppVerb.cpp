#include "korvane/Verbs/CreateAppVerb.h"

#include "korvane/Verbs/CreateVerb.h"

namespace korvane {

Verb createAppVerb() {
    auto verb =
        createVerb(ambrel::ShortcutKind::app, "APP",
                   "The bundle's path, or a name or identifier that \"korvane apps\" lists");
    verb.summary = "Make an isolated copy of an application.";
    verb.examples = {"korvane create app Work \"Chromium Web Browser\"",
                     "korvane create app Work ~/Applications/Chromium.app --add-arg --incognito",
                     "korvane create app Work org.mozilla.firefox --home ~/Work --replace"};
    return verb;
}

} // namespace korvane
