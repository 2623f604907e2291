#include "korvane-runner/Desktop/Linux/GLibLoop.h"

#include "Ambrel/Platform/Pipe.h"
#include "Support/Expect.h"
#include "korvane-runner/Desktop/AppLoopContract.h"

#include <glib.h>
#include <unistd.h>

using namespace korvane::runner;
using namespace korvane::test;

TEST_CASE("GLib's loop keeps the contract of an event loop") {
    checkAppLoop([] { return std::make_unique<GLibLoop>(); });
}

TEST_CASE("what is left of a loop that has gone is not called when GLib's context runs on") {
    const auto pipe = ambrel::Pipe::make();
    REQUIRE(::write(pipe.writeEnd->get(), "x", 1) == 1);
    int calls = 0;
    {
        GLibLoop loop;
        loop.post([&] { ++calls; });
        loop.whenReadable(pipe.readEnd.get(), [&] {
            ++calls;
            return AppLoop::Watching::goesOn;
        });
    }

    while (g_main_context_iteration(nullptr, FALSE) == TRUE) {
    }

    CHECK(calls == 0);
}

TEST_CASE("sources of other code are served by the same loop") {
    GLibLoop loop;
    g_idle_add(
        [](gpointer data) -> gboolean {
            static_cast<AppLoop*>(data)->end(7);
            return G_SOURCE_REMOVE;
        },
        &loop);

    CHECK(loop.run() == 7);
}
