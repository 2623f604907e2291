#include "Ambrel/Wrapper/RunnerLocator.h"

#include "Support/Environment.h"
#include "Support/Expect.h"

#include <set>

using namespace ambrel;
using namespace korvane::test;

namespace {

/// Answers from a list and remembers what was asked.
class FakeFileManager final : public FileManager {
public:
    explicit FakeFileManager(std::set<Path> executables) : executables_(std::move(executables)) {}

    bool isExecutableFile(const Path& path) const override {
        asked.push_back(path);
        return executables_.count(path) != 0;
    }
    Path currentDirectory() const override { return "/source"; }

    mutable Strings asked;

private:
    std::set<Path> executables_;
};

const MainBundle bundle{"/app/Contents/MacOS/manager", "/app/Contents/Resources"};
const Path inResources = "/app/Contents/Resources/korvane-runner";
const Path besideExecutable = "/app/Contents/MacOS/korvane-runner";
const Path debugBuild = "/source/.build/debug/korvane-runner";
const Path releaseBuild = "/source/.build/release/korvane-runner";

} // namespace

TEST_CASE("a runner in the resources wins over one beside the executable") {
    const FakeFileManager files({inResources, besideExecutable, debugBuild, releaseBuild});

    CHECK(RunnerLocator::locate(bundle, files) == inResources);
    CHECK(files.asked == Strings{inResources});
}

TEST_CASE("a runner in the resources that is not executable is passed over") {
    const TempDir tmp;
    writeFile(tmp / "resources/korvane-runner");
    makeFolder(tmp / "programs/korvane-runner");
    writeScript(tmp / ".build/release/korvane-runner", "true");
    const WorkingDirectory inside(tmp.path());

    const auto runner =
        RunnerLocator::locate({tmp / "programs/manager", tmp / "resources"}, SystemFileManager());

    CHECK(runner == tmp / ".build/release/korvane-runner");
}

TEST_CASE("with no candidate executable the result is absent and all were asked") {
    const FakeFileManager files({});

    CHECK_FALSE(RunnerLocator::locate(bundle, files).has_value());
    CHECK(files.asked == Strings{inResources, besideExecutable, debugBuild, releaseBuild});
}

TEST_CASE("a debug build is preferred over a release build") {
    const FakeFileManager files({debugBuild, releaseBuild});

    CHECK(RunnerLocator::locate(bundle, files) == debugBuild);
}

TEST_CASE("the candidates stand in order and are not checked") {
    const FakeFileManager files({});
    CHECK(RunnerLocator::candidates(bundle, files) ==
          Strings{inResources, besideExecutable, debugBuild, releaseBuild});
    CHECK(RunnerLocator::candidates({bundle.executableURL, {}}, files) ==
          Strings{besideExecutable, debugBuild, releaseBuild});
    CHECK(RunnerLocator::candidates({{}, bundle.resourceURL}, files) ==
          Strings{inResources, debugBuild, releaseBuild});
    CHECK(RunnerLocator::candidates({}, files) == Strings{debugBuild, releaseBuild});
    CHECK(files.asked.empty());
    CHECK(RunnerLocator::runnerName == "korvane-runner");
}
