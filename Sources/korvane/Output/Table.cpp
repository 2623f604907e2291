#include "korvane/Output/Table.h"

#include "Ambrel/Base/Utf8.h"

#include <algorithm>
#include <ostream>

namespace korvane {

namespace {

/// Characters, not bytes. Wide and combining characters make a column ragged and nothing worse.
std::size_t width(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

} // namespace

std::string yesOrNo(bool value) { return value ? "yes" : "no"; }

void Table::add(std::vector<std::string> cells) {
    for (auto& cell : cells) cell = ambrel::utf8::oneLine(cell);
    rows_.push_back(std::move(cells));
}

void Table::write(std::ostream& out) const {
    std::vector<std::size_t> widths;
    for (const auto& row : rows_) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], width(row[i]));
    }
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            out << row[i];
            if (i + 1 < row.size()) out << std::string(widths[i] - width(row[i]) + 2, ' ');
        }
        out << '\n';
    }
}

} // namespace korvane
