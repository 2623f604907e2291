#include "Ambrel/Platform/DetachedProcess.h"

#include <fcntl.h>

namespace ambrel {

ChildProcess launchDetached(const Path& executable, std::vector<std::string> arguments,
                            const std::shared_ptr<const OwnedFd>& standardError,
                            std::optional<Environment> environment) {
    const auto nowhere =
        std::make_shared<const OwnedFd>(OwnedFd::open("open", "/dev/null", O_RDWR));
    ChildProcess process({.executable = executable,
                          .arguments = std::move(arguments),
                          .environment = std::move(environment),
                          .standardOutput = nowhere,
                          .standardError = standardError ? standardError : nowhere,
                          .standardInput = nowhere,
                          .ownSession = true});
    process.launch();
    return process;
}

} // namespace ambrel
