#include "korvane-runner/Web/WebStage.h"

#include "Support/Expect.h"
#include "Support/Programs.h"
#include "korvane-runner/Signals.h"

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

TEST_CASE("an unusual scheme leaves only when the person agrees, who is asked once at a time") {
    WebStage stage;
    Fifo done(stage.tmp / "done");
    writeScript(stage.tmp / "open", "echo \"$1\" > " + quoted(done.path()));
    auto& asked = stage.desktop.window.asked;

    CHECK_FALSE(stage.events().navigationWanted({"game://start/1", false}));
    CHECK(asked.empty());
    CHECK_FALSE(stage.events().navigationWanted({"game://start/2", true}));
    CHECK_FALSE(stage.events().navigationWanted({"game://start/3", true}));
    REQUIRE(asked.size() == 1);
    CHECK(contains(asked[0].question, "game://start/2"));
    stage.desktop.window.answer(0, false);
    CHECK_FALSE(stage.events().navigationWanted({"game://start/4", true}));
    REQUIRE(asked.size() == 2);
    stage.desktop.window.answer(1, true);

    CHECK(done.line() == "game://start/4");
}

TEST_CASE("camera, microphone and location are the person's to give") {
    WebStage stage;
    std::vector<std::string> answers;
    const auto note = [&answers](const char* what) {
        return
            [&answers, what](bool allowed) { answers.push_back(what + std::to_string(allowed)); };
    };
    auto& asked = stage.desktop.window.asked;

    stage.events().permissionWanted(Permission::camera, "https://a.example", note("camera "));
    stage.events().permissionWanted(Permission::location, "https://a.example", note("location "));
    CHECK(answers == Strings{"location 0"}); // one question at a time
    REQUIRE(asked.size() == 1);
    CHECK(asked[0].question == "Allow https://a.example to use your camera?");
    CHECK(asked[0].yes == "Allow");
    stage.desktop.window.answer(0, true);
    CHECK(answers == Strings{"location 0", "camera 1"});
}

TEST_CASE("who has said no three times in a row is left alone for a while") {
    WebStage stage;
    auto& asked = stage.desktop.window.asked;
    const auto want = [&] {
        stage.events().permissionWanted(Permission::location, "https://a.example", [](bool) {});
    };

    for (std::size_t i = 0; i < 5; ++i) {
        want();
        REQUIRE(asked.size() == i + 1);
        stage.desktop.window.answer(i, i == 1); // the second with yes
    }
    want();
    CHECK(asked.size() == 5);
    stage.desktop.fakeLoop.letTimePass();
    want();
    CHECK(asked.size() == 6);
}

TEST_CASE("dialogs for printing count among the questions that a person is asked") {
    WebStage stage;
    auto& asked = stage.desktop.window.asked;
    const auto want = [&] {
        stage.events().permissionWanted(Permission::location, "https://a.example", [](bool) {});
    };

    REQUIRE(stage.events().printWanted());
    CHECK_FALSE(stage.events().printWanted());
    want();
    CHECK(asked.empty());
    stage.events().printAnswered(true);
    for (int i = 0; i < 3; ++i) {
        REQUIRE(stage.events().printWanted());
        stage.events().printAnswered(false);
    }
    CHECK_FALSE(stage.events().printWanted());
    want();
    CHECK(asked.empty());
    stage.desktop.fakeLoop.letTimePass();
    CHECK(stage.events().printWanted());
}

TEST_CASE("a question that is open when the instance ends is answered with no") {
    WebStage stage;
    std::optional<bool> answer;
    stage.events().permissionWanted(Permission::location, "x", [&](bool is) { answer = is; });

    stage.instance.reset();

    CHECK(answer == false);
}
