// A program for tests to start: it is linked as the runner is, without the toolkit's libraries,
// opens those that its argument names ("gio", "engine") and runs their event loop, which ends with
// status 7. Says on standard output, before and after, whether each is open and whether its names
// are found through the program, and on standard error why they could not be opened.
#include "korvane-runner/Desktop/Linux/GLibLoop.h"
#include "korvane-runner/Desktop/Linux/Toolkit.h"
#include "korvane-runner/Desktop/WebDesktop.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>

namespace {

using namespace korvane::runner;

const char* state(const char* soname, const char* function) {
    if (dlopen(soname, RTLD_NOLOAD | RTLD_LAZY) == nullptr) return "closed";
    return dlsym(RTLD_DEFAULT, function) == nullptr ? "hidden" : "open";
}

void tellState() {
    std::printf("GIO %s, engine %s\n", state("libgio-2.0.so.0", "g_file_get_type"),
                state("libwebkitgtk-6.0.so.4", "gtk_print_unix_dialog_get_type"));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    tellState();
    try {
        std::strcmp(argv[1], "engine") == 0 ? openEngine() : openGio();
    } catch (const DesktopError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    tellState();
    GLibLoop loop;
    loop.post([&] { loop.end(7); });
    return loop.run();
}
