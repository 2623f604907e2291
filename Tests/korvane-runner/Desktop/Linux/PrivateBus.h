#pragma once

#include "RealBus.h"
#include "Support/Environment.h"

#include <functional>
#include <gio/gio.h>
#include <map>
#include <memory>
#include <string>

namespace korvane::test {

/// A bus that is the session's for this process until the end of the scope, when nothing of the
/// process may use it any more.
class PrivateBus {
public:
    PrivateBus() = default;
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus();

    /// Ends it under its clients.
    void end() { bus_.end(); }

    std::string address() const { return "unix:path=" + bus_.socket(); }

private:
    RealBus bus_;
    ScopedVariable variable_{"DBUS_SESSION_BUS_ADDRESS", address()};
};

/// Another program on the bus: a connection of its own, served by the default context of this
/// process.
class BusPeer {
public:
    explicit BusPeer(const PrivateBus& bus);
    BusPeer(const BusPeer&) = delete;
    BusPeer& operator=(const BusPeer&) = delete;
    /// Leaves the bus, and returns when the bus has noticed.
    ~BusPeer();

    void own(const std::string& name) const;
    void release(const std::string& name) const;

    /// Calls `heard` with each signal of the interface, as GVariant prints it.
    void listen(const char* interface, std::function<void(const std::string&)> heard) const;

    /// Answers each method of an object at `path` with what `answer` makes of its name and
    /// arguments: a floating tuple, or null for an error.
    using Answer = std::function<GVariant*(const std::string& method, GVariant* arguments)>;
    void serve(const char* path, const char* interfaceXml, Answer answer);
    /// How many of the callers until now wait for no answer.
    int callsWithoutAnswer() const { return callsWithoutAnswer_; }

    /// What a method of another program answers, as GVariant prints it, or the name of the error.
    /// The default context runs meanwhile.
    std::string ask(const std::string& program, const char* path, const char* interface,
                    const char* method, GVariant* arguments) const;

private:
    static void onMethod(GDBusConnection*, const char*, const char*, const char*,
                         const char* method, GVariant* arguments, GDBusMethodInvocation* call,
                         gpointer self);
    void callBus(const char* method, GVariant* arguments) const;

    GDBusConnection* connection_;
    std::unique_ptr<Answer> answer_;
    int callsWithoutAnswer_ = 0;
};

/// The value as GVariant prints it, types included.
std::string printed(GVariant* value);

} // namespace korvane::test
