#include "korvane/Verbs/AllVerbs.h"

#include "Manager/Desktop/Registration.h"
#include "Manager/Programs/Adoption.h"
#include "korvane/Verbs/AdoptVerb.h"
#include "korvane/Verbs/AppsVerb.h"
#include "korvane/Verbs/CreateAppVerb.h"
#include "korvane/Verbs/CreateCommandVerb.h"
#include "korvane/Verbs/CreateFileVerb.h"
#include "korvane/Verbs/CreateWebVerb.h"
#include "korvane/Verbs/DeleteVerb.h"
#include "korvane/Verbs/EditVerb.h"
#include "korvane/Verbs/IconLintVerb.h"
#include "korvane/Verbs/IconVerb.h"
#include "korvane/Verbs/InspectVerb.h"
#include "korvane/Verbs/LeftoversVerb.h"
#include "korvane/Verbs/ListVerb.h"
#include "korvane/Verbs/LogsVerb.h"
#include "korvane/Verbs/MigrateVerb.h"
#include "korvane/Verbs/MoveVerb.h"
#include "korvane/Verbs/OpenVerb.h"
#include "korvane/Verbs/ProfileVerb.h"
#include "korvane/Verbs/RegisterVerb.h"
#include "korvane/Verbs/RepairVerb.h"
#include "korvane/Verbs/RunVerb.h"
#include "korvane/Verbs/ShowVerb.h"
#include "korvane/Verbs/StopVerb.h"
#include "korvane/Verbs/UnadoptVerb.h"
#include "korvane/Verbs/UnregisterVerb.h"

#include <string_view>
#include <utility>

namespace korvane {

namespace {

/// Whether this system has what the verb is about.
bool isOffered(const Verb& verb) {
    if (verb.name == "adopt" || verb.name == "unadopt") return adoptionIsOffered();
    const bool isOnDesktop = verb.name == "register" || verb.name == "unregister";
    return !isOnDesktop || registration::isOffered();
}

/// What people's fingers know from the shell.
constexpr std::pair<std::string_view, const char*> aliases[] = {{"list", "ls"}, {"delete", "rm"}};

void addAliases(Verb& verb) {
    for (const auto& [name, alias] : aliases) {
        if (verb.name == name) verb.aliases.emplace_back(alias);
    }
}

} // namespace

std::vector<Verb> allVerbs() {
    std::vector<Verb> verbs{
        createAppVerb(),     createWebVerb(),  createFileVerb(),
        createCommandVerb(), adoptVerb(),      unadoptVerb(),
        listVerb(),          showVerb(),       openVerb(),
        runVerb(),           stopVerb(),       logsVerb(),
        editVerb(),          moveVerb(),       migrateVerb(),
        registerVerb(),      unregisterVerb(), repairVerb(),
        deleteVerb(),        leftoversVerb(),  leftoversDeleteVerb(),
        appsVerb(),          inspectVerb(),    profileCheckVerb(),
        iconVerb(),          iconLintVerb(),
    };
    std::erase_if(verbs, [](const Verb& verb) { return !isOffered(verb); });
    for (auto& verb : verbs) addAliases(verb);
    return verbs;
}

} // namespace korvane
