#pragma once

#include "korvane-runner/Desktop/Linux/SessionBus.h"

#include <string_view>

namespace korvane::runner {

/// An object on the session's bus, for as long as this lives, that other programs call. The bus
/// answers for it what is no matter of its own: questions for its interface, and calls of methods
/// that it does not have or with arguments of other types. What it was set up with may be held for
/// longer, but is not called any more.
class BusObject {
public:
    /// The answer to a method: a tuple, or null for an error.
    using Method = std::function<GVariant*(std::string_view name, GVariant* arguments)>;
    /// The value of a property; never null.
    using Property = std::function<GVariant*(std::string_view name)>;

    struct Setup {
        const char* path;
        std::string_view interface; ///< a node with one interface, in the format of introspection
        Method method;
        Property property;
    };

    /// `bus` may go before this does.
    BusObject(SessionBus& bus, Setup setup);
    BusObject(const BusObject&) = delete;
    BusObject& operator=(const BusObject&) = delete;
    ~BusObject();

private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace korvane::runner
