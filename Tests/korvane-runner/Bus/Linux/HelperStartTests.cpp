#include "Allocations.h"

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "korvane-runner/Bus/Linux/BusHelper.h"

#include <csignal>
#include <cstdlib>
#include <exception>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::runner::bus;
using namespace korvane::test;
using Kind = HelperMessage::Kind;

namespace {

/// An instance whose program ends at once, and a folder for its socket.
struct HelperStage {
    HelperStage() {
        setMode(runtime, 0700);
        config.instanceHome = tmp / "home";
        config.targetAppPath = AppBundleBuilder(tmp / "T.app").executable("run", "").write();
        const auto program = tmp / "T.app/Contents/MacOS/run";
        REQUIRE(::unlink(program.c_str()) == 0); // a shell needs more than others
        copyProgram("/bin/false", program);
    }

    BusHelper::Setup setup(const ResolvedInstance& instance, const UserPlaces& places,
                           HelperChannel channel) const {
        const BusAddress bus{BusAddress::Kind::file, tmp / "bus"};
        const Environment environment{{"XDG_RUNTIME_DIR", runtime}, {"PATH", "/usr/bin:/bin"}};
        const auto place = SocketPlace::of("k_One", bus, environment);
        return {.instance = instance,
                .user = places,
                .environment = environment,
                .opened = {},
                .bus = bus,
                .prefix = "k_One",
                .claim = claimSocket(place),
                .place = place,
                .channel = std::move(channel),
                .runner = 1};
    }

    TempDir tmp;
    UserHome user{tmp};
    Path runtime = makeFolder(tmp / "run");
    InstanceConfig config = smallestConfig();
};

/// What became of a helper.
struct Course {
    std::optional<HelperMessage> first{}; ///< absent where it has ended itself before
    std::optional<HelperMessage> last{};
    bool hasLacked = false;

    bool isOf(Kind kind) const { return first && first->kind == kind; }
};

[[noreturn]] void endQuietly() {
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGABRT, SIG_DFL);
    std::abort();
}

/// Runs a helper that lacks something from `begin` on. `hasLacked` is asked at its end.
Course courseOf(const HelperStage& stage, const std::function<void()>& begin,
                const std::function<bool()>& hasLacked) {
    const auto places = stage.user.places();
    const auto instance = ResolvedInstance::of(stage.config, places);
    std::optional ends(HelperChannel::makePair());
    const pid_t process = ::fork();
    REQUIRE(process >= 0);
    if (process == 0) {
        BusHelper helper(stage.setup(instance, places, std::move(ends->second)));
        std::set_terminate(endQuietly);
        begin();
        helper.run();
        ::_exit(hasLacked() ? 1 : 0);
    }
    auto ours = std::move(ends->first);
    ends.reset();
    Course course;
    course.first = ours.receive(HelperChannel::Wait::yes);
    while (auto message = ours.receive(HelperChannel::Wait::yes)) course.last = message;
    int status = 0;
    REQUIRE(::waitpid(process, &status, 0) == process);
    // What any start takes for granted ends whoever tries it.
    const bool hasAborted = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
    REQUIRE((course.first ? WIFEXITED(status) : hasAborted));
    course.hasLacked = hasAborted || WEXITSTATUS(status) == 1;
    return course;
}

/// A program that was started has a bus until its end, which is told; else there is none of it.
void checkCourse(const Course& course) {
    if (!course.isOf(Kind::started)) {
        CHECK_FALSE(course.last);
        return;
    }
    REQUIRE(course.last);
    CHECK((course.last->kind == Kind::ended || course.last->kind == Kind::allEnded));
    CHECK(course.last->number == 1);
}

} // namespace

TEST_CASE("a helper that finds no memory starts nothing, or looks after what it has started") {
    const HelperStage stage;
    int declined = 0;
    int started = 0;
    bool isEnough = false;
    for (long failing = 1; !isEnough; ++failing) {
        CAPTURE(failing);

        const auto course = courseOf(
            stage, [failing] { allocationsLeft = failing; }, [] { return allocationsLeft < 0; });

        checkCourse(course);
        CHECK((!course.first || namesIn(stage.runtime + "/korvane/bus").empty()));
        declined += course.isOf(Kind::declined) ? 1 : 0;
        started += course.isOf(Kind::started) ? 1 : 0;
        isEnough = !course.hasLacked;
    }
    CHECK(declined > 20);
    CHECK(started > 0);
}

// The sanitizer of undefined behaviour looks at objects through a pipe, and takes it for a fault
// where there is no descriptor for that.
#ifndef __SANITIZE_ADDRESS__
TEST_CASE("a helper without descriptors starts nothing, or looks after what it has started") {
    const HelperStage stage;
    int declined = 0;
    for (rlim_t limit = 3; limit < 20; ++limit) {
        CAPTURE(limit);

        const auto course = courseOf(
            stage,
            [limit] {
                const rlimit few{limit, limit};
                ::setrlimit(RLIMIT_NOFILE, &few);
            },
            [] { return false; });

        checkCourse(course);
        CHECK_FALSE(course.isOf(Kind::failed)); // without names of its own it may well start
        CHECK(namesIn(stage.runtime + "/korvane/bus").empty());
        declined += course.isOf(Kind::declined) ? 1 : 0;
        if (limit == 19) CHECK(course.isOf(Kind::started));
    }
    CHECK(declined > 2);
}
#endif
