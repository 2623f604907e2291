#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// Lines of aligned columns for a person to read. Every cell is escaped, so that a name cannot
/// fake a line or turn the text around.
class Table {
public:
    void add(std::vector<std::string> cells);
    /// With a `width`, that of a terminal, columns that hold paths are shortened to make the lines
    /// fit, as far as that leaves something of them to read.
    void write(std::ostream& out, std::optional<std::size_t> width = std::nullopt) const;

private:
    std::vector<std::vector<std::string>> rows_;
};

/// How a cell tells whether something is so.
std::string yesOrNo(bool value);

} // namespace korvane
