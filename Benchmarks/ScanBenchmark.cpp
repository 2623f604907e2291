// Finds the applications in a folder, as "korvane apps" does, with a signing tool of the caller's
// choice; or starts that tool alone, one after another, once for each entry of the folder.
// scan-applications starts this program and measures it.
#include "Ambrel/Application/AppCatalog.h"
#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/FileSystem.h"

#include <cstdio>
#include <string_view>

namespace {

using ambrel::Path;

std::size_t startEach(const Path& folder, const Path& tool) {
    std::size_t started = 0;
    for (const auto& name : ambrel::fileSystem::list(folder)) {
        ambrel::ChildProcess probe({.executable = tool,
                                    .arguments = {"-d", "--entitlements", ":-", "--xml",
                                                  ambrel::paths::join(folder, name)}});
        probe.launch();
        probe.waitUntilExit();
        ++started;
    }
    return started;
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view work = argc == 4 ? argv[1] : "";
    if (work != "scan" && work != "probes") {
        std::fprintf(stderr, "usage: scan-benchmark scan|probes FOLDER TOOL\n");
        return 2;
    }
    const Path folder = argv[2];
    const Path tool = argv[3];
    const auto count = work == "scan"
                           ? ambrel::AppCatalog::scan({folder}, {}, {.codesign = tool}).size()
                           : startEach(folder, tool);
    std::fprintf(stderr, "%zu\n", count);
    return 0;
}
