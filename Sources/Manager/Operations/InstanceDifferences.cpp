#include "Manager/Operations/InstanceDifferences.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Wrapper/InfoPlist.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/HiddenIcon.h"

namespace korvane {

using ambrel::BundleLayout;
using ambrel::Environment;
using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::PropertyListDictionary;
using ambrel::UserPlaces;
using ambrel::utf8::oneLine;
using registration::EntryCheck;
using Kind = Difference::Kind;
namespace fileSystem = ambrel::fileSystem;

namespace {

constexpr const char* iconKey = "CFBundleIconFile";

/// Collects the differences of one instance.
class Inspector {
public:
    Inspector(const InstanceRecord& record, const Path& runner, const UserPlaces& user,
              const Environment& environment)
        : record_(record), wantedRunner_(runner), user_(user),
          environment_(environment), layout_{record.bundleURL},
          name_(inQuotes(record.config.displayName)) {}

    std::vector<Difference> differences() {
        checkRunner();
        checkInfoPlist();
        checkEntry();
        return std::move(found_);
    }

private:
    void add(Kind kind, const Path& subject, const std::string& sentence) {
        found_.push_back({kind, record_, subject, sentence, {}});
    }
    /// A sentence that ends in the subject.
    void addAt(Kind kind, const Path& subject, const std::string& sentence) {
        add(kind, subject, sentence + ": " + oneLine(subject));
    }

    void checkRunner() {
        const auto runner = layout_.runner();
        if (!fileSystem::exists(runner)) {
            addAt(Kind::runnerMissing, runner, name_ + " has no runner");
        } else if (!fileSystem::isExecutableFile(runner)) {
            addAt(Kind::runnerNotRunnable, runner, "The runner of " + name_ + " cannot be run");
        } else if (!isRunner(runner)) {
            addAt(Kind::runnerDiffers, runner,
                  "The runner of " + name_ + " is that of another version");
        }
    }

    bool isRunner(const Path& file) const {
        try {
            return fileSystem::read(file) == fileSystem::read(wantedRunner_);
        } catch (const ambrel::FileError&) {
            return false; // it can be put in place where the other cannot be read
        }
    }

    void checkInfoPlist() {
        const auto file = layout_.infoPlist();
        const auto info = ambrel::readPropertyList(file);
        if (!info) {
            addAt(Kind::infoPlistMissing, file, name_ + " has no Info.plist that can be read");
            return;
        }
        iconIsMissing_ = info->count(iconKey) > 0 && !record_.iconURL();
        if (iconIsMissing_) {
            addAt(Kind::iconMissing, layout_.icon(),
                  "The icon of " + name_ + " is missing, and only creating it again draws it");
        }
        if (infoPlistWanted(record_, *info) == *info) return;
        addAt(Kind::infoPlistDiffers, file,
              "The Info.plist of " + name_ + " does not say what its configuration says");
    }

    void checkEntry() {
        if (!registration::isOffered()) return;
        try {
            tell(registration::check(record_, user_));
        } catch (const Refusal& refusal) {
            add(Kind::entryImpossible, record_.bundleURL, refusal.sentence());
        }
    }

    void tell(const EntryCheck& check) {
        switch (check.state) {
        case EntryCheck::State::current:
            break;
        case EntryCheck::State::missing:
            tellMissing(check.subject);
            break;
        case EntryCheck::State::outdated:
            // What is left of a lost icon stays in the menu.
            if (iconIsMissing_) break;
            addAt(Kind::entryOutdated, check.subject,
                  "The desktop entry of " + name_ + ", or what belongs to it, is out of date");
            break;
        case EntryCheck::State::stray:
            add(Kind::entryStray, check.subject,
                "The desktop entry of " + name_ + " stands for " + oneLine(check.subject) +
                    ", and the instance is at " + oneLine(record_.bundleURL));
            break;
        case EntryCheck::State::taken:
            add(Kind::entryTaken, check.subject, check.reason);
            break;
        }
    }

    void tellMissing(const Path& file) {
        try {
            registration::requireFree(record_.config.bundleId, record_.bundleURL, user_,
                                      environment_, Remedy::none);
            addAt(Kind::entryMissing, file, name_ + " has no desktop entry");
        } catch (const Refusal& refusal) {
            add(Kind::entryTaken, refusal.subject, refusal.sentence());
        }
    }

    const InstanceRecord& record_;
    const Path& wantedRunner_;
    const UserPlaces& user_;
    const Environment& environment_;
    BundleLayout layout_;
    std::string name_;
    bool iconIsMissing_ = false;
    std::vector<Difference> found_;
};

} // namespace

std::vector<Difference> differencesOf(const InstanceRecord& record, const Path& runner,
                                      const UserPlaces& user, const Environment& environment) {
    return Inspector(record, runner, user, environment).differences();
}

PropertyListDictionary infoPlistWanted(const InstanceRecord& record,
                                       const PropertyListDictionary& existing) {
    std::optional<std::string> icon;
    if (record.iconURL()) icon = BundleLayout::iconName;
    auto wanted = ambrel::infoPlistFor(record.config, icon,
                                       isHidden(record) ? ambrel::WrapperIcon::hidden
                                                        : ambrel::WrapperIcon::shown);
    wanted.merge(PropertyListDictionary(existing));
    return wanted;
}

} // namespace korvane
