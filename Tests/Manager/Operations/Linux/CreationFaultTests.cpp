#include "../Scene.h"

#include "Manager/Operations/Adopting.h"
#include "Support/Faults.h"

#include <cerrno>

namespace korvane::test {

namespace {

/// Runs `act` on a new scene again and again, each time with one more call succeeding before the
/// disk is full, until none fails; returns the errors that ended it.
template <class Act> std::vector<std::string> errorsOnFullDisk(const Act& act) {
    std::vector<std::string> errors;
    for (long failing = 1;; ++failing) {
        const Scene scene;
        faults::arm(failing, {.code = ENOSPC, .lasting = true});
        std::string text;
        try {
            act(scene);
        } catch (const std::exception& error) {
            text = error.what();
        }
        const auto outcome = faults::disarm();
        if (outcome.failedCall.empty()) return errors;
        if (!text.empty()) errors.push_back(text);
    }
}

void checkNamesWhatUsersKnow(const std::vector<std::string>& errors) {
    std::size_t full = 0;
    for (const auto& error : errors) {
        CHECK_FALSE(contains(error, "/.korvane-"));
        CHECK(isOneLine(error));
        full += contains(error, "No space left on device");
    }
    CHECK(full > 5);
}

} // namespace

TEST_CASE("a disk that gets full while an instance is made is told by paths that users know") {
    const auto errors = errorsOnFullDisk([](const Scene& scene) { scene.instance(); });

    checkNamesWhatUsersKnow(errors);
    CHECK(std::ranges::any_of(errors, [](const auto& error) {
        return contains(error, "/Applications/Work.app/Contents/");
    }));
    CHECK(std::ranges::any_of(errors, [](const auto& error) {
        return contains(error, "Cannot write into ") && contains(error, "/Applications: ");
    }));
}

TEST_CASE("a disk that gets full while a program is adopted is told by paths that users know") {
    checkNamesWhatUsersKnow(errorsOnFullDisk([](const Scene& scene) {
        const auto program = writeScript(scene.tmp / "mailer", "exit 0");
        adopt({.program = program, .folder = {}}, scene.user, scene.environment);
    }));
}

} // namespace korvane::test
