#pragma once

#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Operations/Creation.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"

#include <algorithm>

namespace korvane::test {

/// A user with a home of their own, no installed program in sight, and a file that serves as the
/// runner; nothing is ever started.
struct Scene {
    TempDir tmp;
    UserHome home{tmp};
    ambrel::UserPlaces user = home.places();
    ambrel::Environment environment{{"XDG_DATA_DIRS", makeFolder(tmp / "share")}, {"PATH", ""}};
    Path runner = writeScript(tmp / "runner", "exit 0");

    /// The smallest request: a command instance.
    CreateRequest request(const std::string& name = "Work") const {
        CreateRequest made;
        made.name = name;
        made.kind = ambrel::ShortcutKind::command;
        made.commandPath = "/bin/sh";
        made.runner = runner;
        return made;
    }
    /// One of an application that every scene has.
    CreateRequest appRequest(const std::string& name = "Work") const {
        auto made = request(name);
        made.kind = ambrel::ShortcutKind::app;
        made.targetApp = installApp();
        return made;
    }
    /// One of an installed program, as "adopt" takes it.
    CreateRequest programRequest(const std::string& program) const {
        auto made = request();
        made.kind = ambrel::ShortcutKind::app;
        made.program = program;
        return made;
    }
    Path installApp(const std::string& identifier = "org.example.mail") const {
        return AppBundleBuilder(home / "Applications/Mail.app")
            .identifier(identifier)
            .executable("program", "exit 0")
            .write();
    }

    Created make(const CreateRequest& wanted) const { return create(wanted, user, environment); }
    ambrel::InstanceRecord instance(const std::string& name = "Work") const {
        return make(request(name)).record;
    }
    CreationPlan plan(const CreateRequest& wanted) const {
        return planCreation(wanted, user, environment);
    }
    Path bundle(const std::string& name = "Work") const {
        return home / ("Applications/" + name + ".app");
    }
    Path homeOf(const std::string& name = "Work") const {
        return home / ("KorvaneInstances/" + name);
    }
    /// What is stored now.
    ambrel::InstanceConfig configOf(const Path& place) const {
        return ambrel::InstanceConfig::decode(
            readFile(place + "/Contents/Resources/instance.json"));
    }
    /// Writes a configuration that the operations themselves would refuse.
    ambrel::InstanceRecord store(ambrel::InstanceRecord record,
                                 const ambrel::InstanceConfig& config) const {
        writeFile(record.bundleURL + "/Contents/Resources/instance.json", config.encode());
        record.config = config;
        return record;
    }
    /// Everything on disk.
    std::multiset<std::string> everything() const { return snapshot(tmp.path()); }
};

/// The refusal of `action`, after which everything has to be as it was.
template <class Action> Refusal refusalOf(const Scene& scene, const Action& action) {
    const auto before = scene.everything();
    auto refusal = expectThrow<Refusal>(action);
    CHECK(scene.everything() == before);
    CHECK(isOneLine(refusal.sentence()));
    return refusal;
}

inline const Notice* find(const std::vector<Notice>& notices, Notice::Kind kind) {
    const auto found = std::ranges::find(notices, kind, &Notice::kind);
    return found == notices.end() ? nullptr : &*found;
}

/// The notice of this kind; the test ends when there is none.
inline Notice noticeOf(const std::vector<Notice>& notices, Notice::Kind kind) {
    const auto* found = find(notices, kind);
    REQUIRE(found != nullptr);
    CHECK(isOneLine(found->sentence));
    return *found;
}

} // namespace korvane::test
