#pragma once

#include <chrono>
#include <functional>
#include <gio/gio.h>
#include <memory>

namespace korvane::runner {

/// The session bus, over a connection that is made in the background: nothing waits for it, and
/// without a bus, which is not started for this, all that is sent is lost. On the main thread,
/// whose default context must run.
class SessionBus {
public:
    /// A method or a signal. The texts must outlive its use.
    struct Member {
        const char* path;
        const char* interface;
        const char* name;
    };
    /// How long a desktop that is about to end waits in flush().
    static constexpr std::chrono::milliseconds moment{500};

    /// Gets the answer to a call, for as long as it runs; null when there is none.
    using Answered = std::function<void(GVariant* answer)>;

    SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;
    /// What is outstanding is not told any more.
    ~SessionBus();

    /// Calls a method of `service`, which is started where the bus knows how, and tells its answer,
    /// a tuple of `answerType`: later, or at once where it is known that there is no bus. Where
    /// `answered` is null nobody waits for an answer. Takes floating `arguments` over.
    void call(const char* service, const Member& method, GVariant* arguments,
              const char* answerType, const Answered& answered);

    /// Sends a signal to whoever listens. Takes floating `arguments` over.
    void emit(const Member& signal, GVariant* arguments);

    /// Calls `changed` whenever `service` comes, goes or is taken over by another program.
    void whenOwnerChanges(const char* service, std::function<void()> changed);

    /// Calls `owned` with the connection's name of the program that has the name `service`, when
    /// there is one and whenever another one takes the name. None is started for this.
    void whenOwned(const char* service, std::function<void(const char* owner)> owned);

    /// Calls `work` when there is a connection, at once where that is so already; never where there
    /// is no bus.
    void whenConnected(std::function<void(GDBusConnection*)> work);

    /// Waits until all calls are answered and all signals are on their way, `atMost` that long. The
    /// default context runs meanwhile.
    void flush(std::chrono::milliseconds atMost);

private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace korvane::runner
