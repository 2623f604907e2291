#pragma once

#include "korvane-runner/Bus/ServiceFile.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace korvane::runner::bus {

/// Variables that programs want the services to have that are started later.
using ServiceVariables = std::map<std::string, std::string, std::less<>>;

/// Who starts what is asked for on the bus, and knows what came of it.
class ServiceProcesses {
public:
    virtual ~ServiceProcesses() = default;

    /// Starts a service, with `additions` in its environment. Absent when it runs; else the
    /// system's reason, "Permission denied".
    virtual std::optional<std::string> start(const ServiceFile& service,
                                             const ServiceVariables& additions) = 0;

    /// Asks the process to end that was started last for the service `name`. False where it has
    /// ended already.
    virtual bool askToEnd(std::string_view name) = 0;

    /// Whether a process that connects now belongs to a service that was started here.
    virtual bool isOfService(std::int64_t process) = 0;
};

} // namespace korvane::runner::bus
