#include "korvane/Verbs/CreateCommandVerb.h"

#include "korvane/Verbs/CreateVerb.h"

namespace korvane {

Verb createCommandVerb() {
    auto verb = createVerb(ambrel::ShortcutKind::command, "PROGRAM",
                           "A program's path, or a name to look up in PATH now");
    verb.summary = "Make an application of a command.";
    verb.examples = {"korvane create command Backup rsync -- -a /data /backup",
                     "korvane create command Server ./serve --env PORT=8080"};
    verb.rules.trailingAfter = 2;
    return verb;
}

} // namespace korvane
