#pragma once

#include "Manager.h"

namespace korvane::test {

/// A profile with what each must say, and one argument.
inline nlohmann::json profileOf(const std::string& bundleId) {
    return {{"bundleId", bundleId},     {"displayName", "Mail Reader"},
            {"sandboxed", false},       {"strategy", "home-override"},
            {"singleton", "none"},      {"prefsLeak", false},
            {"extraArgs", {"--apart"}}, {"verifiedOn", nlohmann::json::array()},
            {"confidence", "verified"}};
}

/// A manager with one installed application.
struct StartPlanFixture {
    Manager manager;
    StartPlanFixture() { manager.installApp("Mail", "org.example.mail"); }

    void writeProfile(const nlohmann::json& profile,
                      const std::string& id = "org.example.mail") const {
        writeFile(manager.home / (".config/korvane/profiles/" + id + ".json"), profile.dump());
    }
    ambrel::InstanceConfig create(Strings more = {}) const {
        more.insert(more.begin(), {"app", "Work", "Mail"});
        return manager.configOf(manager.create(more));
    }
    /// What create says with --replace.
    std::string replace(const Strings& more = {}) const { return replaceBy("Mail", more); }
    std::string replaceBy(const std::string& program, Strings more = {}) const {
        more.insert(more.begin(), {"create", "app", "Work", program, "--runner",
                                   KORVANE_TEST_RUNNER, "--replace"});
        const auto done = manager.run(more);
        REQUIRE(done.status == 0);
        return done.error;
    }
    /// Adopts a built program, which then is the application.
    ambrel::InstanceConfig createOf(const Path& program, const Strings& more = {}) const {
        const auto into =
            manager.tmp / ("adopted" + std::to_string(namesIn(manager.tmp.path()).size()));
        const auto app = manager.result({"adopt", program, "--into", into});
        Strings words{"app", "Work", app.substr(0, app.size() - 1)};
        words.insert(words.end(), more.begin(), more.end());
        return manager.configOf(manager.create(words));
    }
};

/// The desktop id of the instance that is made.
inline const std::string id = "app.korvane.instance.work";

} // namespace korvane::test
