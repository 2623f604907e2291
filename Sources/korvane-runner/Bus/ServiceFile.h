#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::runner::bus {

/// What a file "*.service" of the bus says: which program is started so that somebody has a name
/// (D-Bus Specification, "Message Bus Starting Services (Activation)").
struct ServiceFile {
    std::string name;
    std::vector<std::string> command; ///< a program, found as a shell finds it, and its arguments
    std::string systemdService{};     ///< empty where systemd has no part in it

    /// As the bus reads it. Absent for what it would not take for a service.
    static std::optional<ServiceFile> parse(std::string_view text);

    /// Whether the command can start it. Some that systemd alone starts name one that fails.
    bool isStartable() const;
    bool operator==(const ServiceFile&) const = default;
};

/// The words of a command line with a shell's quotes, of which nothing is expanded. Absent where a
/// quotation does not end.
std::optional<std::vector<std::string>> commandWords(std::string_view line);

/// The services that there are, by name.
class ServiceTable {
public:
    /// From the folders in their order: the first service of a name is meant, even where it is one
    /// that cannot be started.
    void add(const ServiceFile& service);

    /// Only one that can be started. Null where there is none; valid until another is added.
    const ServiceFile* find(std::string_view name) const;
    /// Of all that can be started.
    std::vector<std::string> names() const;

private:
    std::map<std::string, ServiceFile, std::less<>> services_;
};

} // namespace korvane::runner::bus
