#include "korvane/Verbs/CreateWebVerb.h"

#include "korvane/Verbs/CreateVerb.h"

namespace korvane {

Verb createWebVerb() {
    auto verb = createVerb(ambrel::ShortcutKind::web, "URL", "The site's address");
    verb.summary = "Make an application of a web site.";
    verb.examples = {"korvane create web Mail https://mail.example.org/"};
    return verb;
}

} // namespace korvane
