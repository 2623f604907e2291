#pragma once

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"

namespace korvane::test {

inline const Path probe = KORVANE_TEST_PROBE;
inline const std::string dash = " \xe2\x80\x94 ";
inline const std::string unreadable = "runner: unreadable instance.json" + dash;
inline const std::string failed = "runner: failed to launch instance" + dash;

/// A wrapper with the built runner in it, and a user of its own.
struct Wrapper {
    Wrapper() : user(tmp) { copyProgram(KORVANE_TEST_RUNNER, runner); }
    explicit Wrapper(const ambrel::InstanceConfig& config) : Wrapper() { configure(config); }

    void configure(const ambrel::InstanceConfig& config) const { writeFile(json, config.encode()); }
    void configure(const std::string& text) const { writeFile(json, text); }
    ProgramResult open() const { return run({runner}); }

    TempDir tmp;
    OwnUserHome user;
    Path runner = tmp / "W.app/Contents/MacOS/runner";
    Path json = tmp / "W.app/Contents/Resources/instance.json";
};

inline void checkFailure(const ProgramResult& result, const std::string& text) {
    CHECK(result.error == text);
    CHECK(result.status == 1);
    CHECK(result.output.empty());
}

inline ambrel::InstanceConfig shell(const Path& home, const std::string& script) {
    return commandConfig(home, "/bin/sh", {"-c", script});
}

/// An application beside the wrapper whose program is a script.
inline ambrel::InstanceConfig applicationConfig(const Wrapper& wrapper, const Path& home,
                                                const std::string& script) {
    auto config = smallestConfig();
    config.instanceHome = home;
    config.targetAppPath =
        AppBundleBuilder(wrapper.tmp / "T.app").executable("run", script).write();
    return config;
}

} // namespace korvane::test
