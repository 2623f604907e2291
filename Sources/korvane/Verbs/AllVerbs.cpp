#include "korvane/Verbs/AllVerbs.h"

#include "korvane/Verbs/AdoptVerb.h"
#include "korvane/Verbs/AppVerbs.h"
#include "korvane/Verbs/CreateVerbs.h"
#include "korvane/Verbs/DeleteVerb.h"
#include "korvane/Verbs/EditVerb.h"
#include "korvane/Verbs/IconLintVerb.h"
#include "korvane/Verbs/IconVerb.h"
#include "korvane/Verbs/ListVerb.h"
#include "korvane/Verbs/LogsVerb.h"
#include "korvane/Verbs/MigrateVerb.h"
#include "korvane/Verbs/ProfileVerb.h"
#include "korvane/Verbs/RegisterVerbs.h"
#include "korvane/Verbs/ShowVerb.h"
#include "korvane/Verbs/StartVerbs.h"

namespace korvane {

std::vector<Verb> allVerbs() {
    return {
        createAppVerb(), createWebVerb(), createFileVerb(),   createCommandVerb(), adoptVerb(),
        listVerb(),      showVerb(),      openVerb(),         runVerb(),           logsVerb(),
        editVerb(),      migrateVerb(),   registerVerb(),     unregisterVerb(),    deleteVerb(),
        appsVerb(),      inspectVerb(),   profileCheckVerb(), iconVerb(),          iconLintVerb(),
    };
}

} // namespace korvane
