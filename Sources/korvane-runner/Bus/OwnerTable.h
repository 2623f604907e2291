#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::runner::bus {

/// Which program of the instance has which of its names, as the bus has told the programs: it does
/// so unasked, which saves a connection of one's own. Programs and processes are those of this
/// instance alone.
class OwnerTable {
public:
    /// Tells connections of one unique name apart: where the bus has ended and begun again, the
    /// new one gives the same names once more, while what was told to the old one is still on its
    /// way to somebody.
    using Connection = std::uint64_t;

    /// The connection `uniqueName` is a program's of the process `process`. What another of that
    /// name had is nobody's.
    Connection connected(std::string_view uniqueName, std::int64_t process);
    /// It has ended; what it had is nobody's.
    void disconnected(std::string_view uniqueName, Connection connection);

    /// What the bus said to the connection `uniqueName` about `name`, a name on the bus. One that
    /// is not connected is not heard.
    void acquired(std::string_view name, std::string_view uniqueName);
    void lost(std::string_view name, std::string_view uniqueName);

    /// The unique name of whoever has `name`, which may be a unique one itself. Absent where
    /// nobody of the instance has it.
    std::optional<std::string> ownerOf(std::string_view name) const;
    /// What the connection `uniqueName` has, without that name itself.
    std::vector<std::string> namesOf(std::string_view uniqueName) const;
    /// The process behind `name`, likewise.
    std::optional<std::int64_t> processOf(std::string_view name) const;

    bool isOwned(std::string_view name) const { return ownerOf(name).has_value(); }

private:
    struct Program {
        Connection connection;
        std::int64_t process;
        std::set<std::string, std::less<>> names{};
    };
    using Programs = std::map<std::string, Program, std::less<>>;

    void forget(Programs::iterator program);
    void forgetName(std::string_view name, std::string_view uniqueName);

    Connection lastConnection_ = 0;
    Programs programs_;                                      ///< by unique name
    std::map<std::string, std::string, std::less<>> owners_; ///< by name
};

} // namespace korvane::runner::bus
