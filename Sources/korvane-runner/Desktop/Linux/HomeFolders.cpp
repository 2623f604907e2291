#include "korvane-runner/Desktop/Linux/HomeFolders.h"

#include "Ambrel/Platform/ProcessEnvironment.h"

#include <algorithm>
#include <cerrno>
#include <glib.h>
#include <sys/stat.h>

namespace korvane::runner {

namespace {

using namespace ambrel;

/// Nobody can make anything there, not even root.
constexpr const char* nowhere = "/proc/nowhere";
constexpr const char* names[] = {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME",
                                 "XDG_CACHE_HOME"};

bool mayBeLookedFor(const Path& folder) {
    struct stat status {};
    return folder.empty() || ::stat((folder + "/.").c_str(), &status) == 0 || errno == ENOENT;
}

/// It asks the environment the first time alone.
void letGLibRemember() {
    g_get_home_dir();
    g_get_user_config_dir();
    g_get_user_data_dir();
    g_get_user_state_dir();
    g_get_user_cache_dir();
}

} // namespace

void settleHomeFolders() noexcept {
    Environment before;
    Environment meanwhile;
    for (const char* name : names) {
        const char* value = g_getenv(name);
        before[name] = value == nullptr ? "" : value; // to GLib that is as good as unset
        meanwhile[name] = nowhere;
    }
    const auto isGood = [](const auto& variable) { return mayBeLookedFor(variable.second); };
    if (std::ranges::all_of(before, isGood)) return;
    setProcessVariables(meanwhile);
    letGLibRemember();
    setProcessVariables(before);
}

} // namespace korvane::runner
