#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace korvane::runner::bus {

/// The first element of the names that an instance has on the user's bus, from its bundle
/// identifier: [A-Za-z_][A-Za-z0-9_]*, another for each identifier, readable and at most 57 bytes.
std::string privatePrefix(std::string_view identifier);

/// How the names of an instance's programs are called on the user's bus. The prefix stands before
/// them: programs look for others by the beginnings of names, so that a suffix would lead the
/// user's own programs to the instance. Media players are the exception, for what controls them
/// looks for that beginning on purpose.
class PrivateNames {
public:
    /// `prefix` is one element of a name.
    explicit PrivateNames(const std::string& prefix);

    /// The bus's name for the valid bus name `name`, valid itself and never longer than 255 bytes;
    /// unique names are the same everywhere.
    std::string toBus(std::string_view name);
    /// Likewise for what names of a name space have in front. Absent where none would fit.
    std::optional<std::string> nameSpaceToBus(std::string_view nameSpace) const;

    /// The name that the instance's programs know. Absent for names that are not the instance's;
    /// unique names are the same everywhere.
    std::optional<std::string> fromBus(std::string_view name) const;

private:
    std::string shortened(std::string_view name);

    std::string prefix_; ///< with a dot behind it
    std::string suffix_; ///< the same with a dot before it
    /// The names that do not fit, by what the bus knows them as. A name is asked for again and
    /// again, and must be called the same each time.
    std::map<std::string, std::string, std::less<>> shortened_;
};

} // namespace korvane::runner::bus
