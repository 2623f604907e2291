#include "korvane/Verbs/CreateCommandVerb.h"

#include "korvane/Verbs/CreateVerb.h"

namespace korvane {

Verb createCommandVerb() {
    auto verb =
        createVerb(ambrel::ShortcutKind::command, "PROGRAM",
                   "A program's path, or a name to look up in PATH now; all behind it is its own");
    verb.summary = "Make an application of a command.";
    verb.examples = {"korvane create command Backup rsync -a --delete /data /backup",
                     "korvane create command Server --env PORT=8080 ./serve --verbose",
                     "korvane create command Top --terminal htop"};
    verb.rules.trailingAfter = 2;
    verb.rules.apart = options::Apart::byPosition;
    return verb;
}

} // namespace korvane
