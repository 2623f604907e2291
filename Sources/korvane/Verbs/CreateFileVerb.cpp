#include "korvane/Verbs/CreateFileVerb.h"

#include "korvane/Verbs/CreateVerb.h"

namespace korvane {

Verb createFileVerb() {
    auto verb = createVerb(ambrel::ShortcutKind::file, "PATH", "What to open");
    verb.summary = "Make an application of a document or folder.";
    verb.examples = {"korvane create file Report ~/Documents/report.pdf"};
    return verb;
}

} // namespace korvane
