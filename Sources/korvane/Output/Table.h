#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace korvane {

/// Lines of aligned columns for a person to read. Every cell is escaped, so that a name cannot
/// fake a line or turn the text around.
class Table {
public:
    void add(std::vector<std::string> cells);
    void write(std::ostream& out) const;

private:
    std::vector<std::vector<std::string>> rows_;
};

/// How a cell tells whether something is so.
std::string yesOrNo(bool value);

} // namespace korvane
