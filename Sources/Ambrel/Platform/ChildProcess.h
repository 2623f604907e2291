#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/HostedProgram.h"
#include "Ambrel/Platform/OwnedFd.h"
#include "Ambrel/Platform/ProcessEnvironment.h"

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

namespace ambrel {

/// A program that could not be started. The description ends in the system's reason.
struct ChildProcessError : std::runtime_error {
    enum class Fault { executable, workingDirectory, arguments };

    ChildProcessError(Fault fault, const Path& path, std::string reason);

    std::string description() const { return what(); }

    Fault fault;        ///< what is to blame, as far as can be told afterwards
    Path path;          ///< the executable or the working directory
    std::string reason; ///< the system's
};

/// A program run as a child. It gets the three standard streams and no other descriptor, default
/// signal dispositions and an empty signal mask; only a SIGHUP that this process ignores stays
/// ignored.
class ChildProcess final : public HostedProgram {
public:
    struct Setup {
        Path executable; ///< a file path, never looked up in PATH; relative: to this process's
                         ///< folder
        std::vector<std::string> arguments;       ///< without a program name in front
        std::optional<Environment> environment{}; ///< the whole environment; absent: inherited
        std::optional<Path> currentDirectory{};   ///< absent: inherited
        std::shared_ptr<const OwnedFd> standardOutput{}; ///< null: inherited
        std::shared_ptr<const OwnedFd> standardError{};  ///< null: inherited
        std::optional<std::string> processName{};        ///< argv[0]; absent: the executable's path
        std::shared_ptr<const OwnedFd> standardInput{};  ///< null: inherited
        bool ownSession = false; ///< away from this one's terminal; an ignored SIGHUP is not kept
    };
    /// Called once with the termination status, on a thread of its own.
    using TerminationHandler = std::function<void(int status)>;

    explicit ChildProcess(Setup setup);
    ChildProcess(ChildProcess&&) noexcept;
    ChildProcess& operator=(ChildProcess&&) noexcept;
    /// Does not end a running child. One that nobody waited for stays a zombie until this process
    /// ends; a termination handler is still called.
    ~ChildProcess() override;

    const Setup& setup() const { return setup_; }

    /// To be set before launch().
    void setTerminationHandler(TerminationHandler handler);

    /// Starts the program. Returns once it runs; throws
    /// ChildProcessError when it cannot be started, and no process is left then.
    void launch();

    bool missed(int signal) const noexcept override;

    /// Blocks until the program has ended.
    void waitUntilExit();
    /// Lost where this process ignores SIGCHLD.
    int terminationStatus() const override;
    bool isRunning() const override;
    void sendSignal(int signal) const noexcept override;
    int processIdentifier() const override;
    /// Reaps nothing but the child, and asks for no signal.
    OwnedFd openEnd() const override;

private:
    struct State;

    void watch();

    Setup setup_;
    TerminationHandler handler_;
    std::shared_ptr<State> state_;
};

} // namespace ambrel
