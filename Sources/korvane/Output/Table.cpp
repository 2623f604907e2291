#include "korvane/Output/Table.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/Text.h"
#include "korvane/Output/Wrapping.h"

#include <algorithm>
#include <ostream>

namespace korvane {

namespace {

using ambrel::text::columnsOf;
using Row = std::vector<std::string>;

constexpr std::size_t gap = 2;
/// What is left of a path at least.
constexpr std::size_t shortestPath = 16;

bool isPath(const std::string& cell) { return cell.starts_with('/') || cell.starts_with("~/"); }

std::vector<std::size_t> widthsOf(const std::vector<Row>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], columnsOf(row[i]));
        }
    }
    return widths;
}

/// What each column cannot be shortened below: the widest cell that is no path.
std::vector<std::size_t> leastOf(const std::vector<Row>& rows) {
    auto others = rows;
    for (auto& row : others) {
        for (auto& cell : row) {
            if (isPath(cell)) cell = shortened(cell, shortestPath);
        }
    }
    return widthsOf(others);
}

/// Takes from the column with most to give until the line fits or there is none.
void makeFit(std::vector<std::size_t>& widths, const std::vector<std::size_t>& least,
             std::size_t wanted) {
    std::size_t total = widths.empty() ? 0 : gap * (widths.size() - 1);
    for (const auto width : widths) total += width;
    while (total > wanted) {
        std::size_t widest = 0;
        for (std::size_t i = 1; i < widths.size(); ++i) {
            const auto spare = [&](std::size_t at) { return widths[at] > least[at]; };
            if (spare(i) && (!spare(widest) || widths[i] > widths[widest])) widest = i;
        }
        if (widths[widest] <= least[widest]) return;
        --widths[widest];
        --total;
    }
}

void writeRow(const Row& row, const std::vector<std::size_t>& widths, std::ostream& out) {
    for (std::size_t i = 0; i < row.size(); ++i) {
        const auto cell = isPath(row[i]) ? shortened(row[i], widths[i]) : row[i];
        out << cell;
        if (i + 1 < row.size()) out << std::string(widths[i] - columnsOf(cell) + gap, ' ');
    }
    out << '\n';
}

} // namespace

std::string yesOrNo(bool value) { return value ? "yes" : "no"; }

void Table::add(std::vector<std::string> cells) {
    for (auto& cell : cells) cell = ambrel::utf8::oneLine(cell);
    rows_.push_back(std::move(cells));
}

void Table::write(std::ostream& out, std::optional<std::size_t> width) const {
    auto widths = widthsOf(rows_);
    if (width) makeFit(widths, leastOf(rows_), *width);
    for (const auto& row : rows_) writeRow(row, widths, out);
}

} // namespace korvane
