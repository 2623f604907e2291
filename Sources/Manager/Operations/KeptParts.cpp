#include "Manager/Operations/KeptParts.h"

#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Operations/WorkedOut.h"
#include "Manager/Rules/FieldEffect.h"
#include "Manager/Rules/HiddenIcon.h"
#include "Manager/Rules/InfoPlistKeys.h"
#include "Manager/Rules/OpenedTypes.h"

#include <algorithm>

namespace korvane {

using ambrel::InstanceConfig;
using ambrel::InstanceRecord;
using ambrel::ShortcutKind;
using ambrel::WrapperFactory;

namespace {

using Texts = std::vector<std::string>;

std::string listed(const std::string& what, const Texts& texts) {
    return what + " " + shellWords(texts);
}

/// Adds "the argument --x" or "the arguments --x --y"; nothing for no texts.
void addListed(Texts& parts, const std::string& what, const Texts& texts) {
    if (texts.empty()) return;
    parts.push_back(listed(texts.size() == 1 ? what : what + "s", texts));
}

/// Takes over part by part from `old` into `request`.
class Keeper {
public:
    Keeper(const InstanceRecord& replaced, CreateRequest& request)
        : replaced_(replaced), old_(replaced.config), request_(request) {}

    void keepPlaces() {
        if (!request_.home) {
            request_.home = old_.instanceHome;
            const bool isUsual =
                old_.instanceHome == WrapperFactory::defaultInstanceHome(request_.name);
            if (!isUsual && isHeeded("instanceHome", request_.kind)) tell("its home");
        }
        if (!request_.bundleId) {
            request_.bundleId = old_.bundleId;
            const bool isUsual = old_.bundleId == WrapperFactory::defaultBundleId(request_.name);
            if (!isUsual) tell("its identifier");
        }
        keep("workingDirectory", request_.workingDirectory, old_.workingDirectory,
             "its working directory");
    }

    void keepLook() {
        keep("iconLabel", request_.iconLabel, old_.iconLabel, "its label");
        keepFlag("menuBarIcon", request_.menuBarIcon, old_.menuBarIcon, "its item in the menu bar");
        keepFlag("menuBarIconTemplate", request_.menuBarIconTemplate, old_.menuBarIconTemplate);
        if (!request_.hideIcon) request_.hideIcon = isHidden(replaced_);
    }

    void keepOffers() {
        if (request_.kind != ShortcutKind::app) return;
        if (!old_.registerAsBrowser && !old_.openWithPassthrough) return;
        const auto app = ambrel::AppBundle::read(request_.targetApp);
        if (!app) return;
        // Where no entry stands for an instance, what it can be offered for is not told by types.
        const bool hasEntry = registration::isOffered();
        const bool browses = old_.registerAsBrowser && (!hasEntry || canBrowse(*app));
        const bool opens =
            old_.openWithPassthrough && (!hasEntry || !openedTypes(app->url).empty());
        keepFlag("registerAsBrowser", request_.registerAsBrowser, browses,
                 "that it is offered as a web browser");
        keepFlag("openWithPassthrough", request_.openWithPassthrough, opens,
                 "that it is offered for opening documents");
    }

    void keepSharing() {
        if (request_.shareUserFolders || !bothHeed("shareUserFolders")) return;
        request_.shareUserFolders = old_.shareUserFolders;
        if (!old_.shareUserFolders) tell("that it does not share your folders");
    }

    /// `worked` is what was worked out for the old one; a command has nothing that was.
    void keepStart(const WorkedOut& worked) {
        keepVariables(worked);
        keepNames(worked);
        if (!bothHeed("extraArgs")) return;
        keepArguments(worked);
        if (request_.strategy || !isSameTarget() || old_.strategy == worked.strategy()) return;
        request_.strategy = old_.strategy;
        tell("its strategy");
    }

    KeptParts parts;

private:
    bool bothHeed(std::string_view key) const {
        return isHeeded(key, request_.kind) && isHeeded(key, old_.kind);
    }

    void tell(std::string part) { parts.kept.push_back(std::move(part)); }

    template <class T>
    void keep(std::string_view key, std::optional<T>& wanted, const std::optional<T>& had,
              const std::string& part) {
        if (wanted || !had || !bothHeed(key)) return;
        wanted = had;
        tell(part);
    }

    void keepFlag(std::string_view key, std::optional<bool>& wanted, bool had,
                  const std::string& part = "") {
        if (wanted || !had || !bothHeed(key)) return;
        wanted = had;
        if (!part.empty()) tell(part);
    }

    bool isSameTarget() const {
        return request_.kind == old_.kind &&
               (request_.targetApp == old_.targetAppPath ||
                ambrel::fileSystem::isSameItem(request_.targetApp, old_.targetAppPath));
    }

    void keepVariables(const WorkedOut& worked) {
        if (!bothHeed("environment")) return;
        Texts names;
        for (const auto& [name, value] : worked.ownVariables(old_)) {
            if (request_.environment.emplace(name, value).second) names.push_back(name);
        }
        auto former = worked.formerVariables(old_);
        std::erase_if(former,
                      [&](const auto& name) { return request_.environment.contains(name); });
        addListed(parts.kept, "the variable", names);
        addListed(parts.dropped, "the variable", former);
    }

    void keepNames(const WorkedOut& worked) {
        auto overrides = old_.infoPlistOverrides;
        const auto processName = worked.takeNames(overrides);
        const bool isApp = request_.kind == ShortcutKind::app;
        if (isApp && processName && !processNameOf(request_)) {
            request_.processName = processName;
            tell("its process name");
        }
        keepBus(worked.takeBus(overrides));
        const auto before = request_.infoPlistOverrides.size();
        request_.infoPlistOverrides.merge(overrides);
        if (request_.infoPlistOverrides.size() > before) tell("entries of its Info.plist");
    }

    void keepBus(const WorkedOut::BusChoices& choices) {
        if (request_.kind != ShortcutKind::app) return;
        const auto& given = request_.infoPlistOverrides;
        const bool isSharedGiven = request_.sharedBus || given.contains(ambrel::sharedBusKey);
        if (choices.shared && !isSharedGiven) {
            request_.sharedBus = choices.shared;
            tell(*choices.shared ? "that it shares the session bus"
                                 : "that it has names of its own on the session bus");
        }
        const bool isHidingGiven = request_.hideSecrets || given.contains(ambrel::hidesSecretsKey);
        if (choices.hideSecrets && !isHidingGiven) {
            request_.hideSecrets = choices.hideSecrets;
            if (request_.sharedBus.value_or(false)) return; // it means nothing then
            tell(*choices.hideSecrets ? "that secrets are hidden from it"
                                      : "that secrets are shared with it");
        }
    }

    void keepArguments(const WorkedOut& worked) {
        const auto former = withoutGiven(worked.formerArguments(old_.extraArgs));
        const bool areReplaced = former.empty() && !worked.isIn(old_.extraArgs);
        if (areReplaced && !request_.args.empty()) return;
        if (areReplaced && isSameTarget()) {
            request_.args = withoutGiven(old_.extraArgs);
            if (!request_.args.empty()) tell(listed("its arguments", request_.args));
            return;
        }
        if (!areReplaced && worked.use == UseProfile::no && isSameTarget()) {
            request_.useProfile = UseProfile::no;
        }
        const auto own = withoutGiven(worked.ownArguments(old_.extraArgs));
        request_.addedArgs.insert(request_.addedArgs.begin(), own.begin(), own.end());
        addListed(parts.kept, "the argument", own);
        addListed(parts.dropped, "the argument", former);
    }

    /// One that is given again is not wanted twice.
    Texts withoutGiven(Texts arguments) const {
        std::erase_if(arguments, [&](const std::string& argument) {
            return std::ranges::find(request_.addedArgs, argument) != request_.addedArgs.end();
        });
        return arguments;
    }

    const InstanceRecord& replaced_;
    const InstanceConfig& old_;
    CreateRequest& request_;
};

} // namespace

KeptParts keepParts(const InstanceRecord& replaced, CreateRequest& request,
                    const ambrel::UserPlaces& user, const ambrel::Environment& environment) {
    Keeper keeper(replaced, request);
    keeper.keepPlaces();
    keeper.keepLook();
    keeper.keepOffers();
    keeper.keepSharing();
    keeper.keepStart(WorkedOut::of(replaced.config, request.targetApp, user, environment));
    return std::move(keeper.parts);
}

} // namespace korvane
