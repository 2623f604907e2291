#include "korvane-runner/Desktop/Linux/EngineSandbox.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "korvane-runner/Desktop/WebDesktop.h"

#include <utility>

namespace korvane::runner {

namespace {

using namespace ambrel;

/// As the engine reads it.
bool switchesOff(const Environment& environment) {
    const auto variable = environment.find("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS");
    return variable != environment.end() && variable->second != "0";
}

/// All the namespaces that the engine's processes get, over what there is.
const std::vector<std::string>& trialArguments() {
    static const std::vector<std::string> arguments{
        "--unshare-uts", "--unshare-pid", "--unshare-net", "--unshare-ipc", "--ro-bind", "/", "/",
        "--dev",         "/dev",          "--proc",        "/proc",         "/bin/true"};
    return arguments;
}

DesktopError missing(const Path& tool, const char* package) {
    return DesktopError("The web engine cannot lock its processes in without " +
                        utf8::oneLine(tool) + ", which is part of the package " + package);
}

[[noreturn]] void refuse(std::string_view reason) {
    reason = reason.substr(0, reason.find('\n'));
    throw DesktopError("The web engine cannot lock its processes in on this system: " +
                       (reason.empty() ? "bubblewrap failed" : utf8::oneLine(reason)));
}

} // namespace

EngineSandbox::EngineSandbox(const Environment& environment, SandboxTools tools)
    : tools_(std::move(tools)), isSwitchedOff_(switchesOff(environment)) {
    if (isSwitchedOff_ || !fileSystem::isExecutableFile(tools_.bubblewrap)) return;
    said_ = Pipe::make();
    trial_.emplace(ChildProcess::Setup{.executable = tools_.bubblewrap,
                                       .arguments = trialArguments(),
                                       .standardOutput = said_->writeEnd,
                                       .standardError = said_->writeEnd});
    trial_->launch();
}

void EngineSandbox::require() {
    if (isSwitchedOff_) return;
    if (!trial_) throw missing(tools_.bubblewrap, "bubblewrap");
    if (!fileSystem::isExecutableFile(tools_.busProxy)) {
        throw missing(tools_.busProxy, "xdg-dbus-proxy");
    }
    const auto reason = said_->readToEnd();
    trial_->waitUntilExit();
    if (trial_->terminationStatus() != 0) refuse(reason);
}

} // namespace korvane::runner
