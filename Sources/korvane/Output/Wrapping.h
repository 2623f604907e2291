#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace korvane {

/// Lines longer than this are hard to read, however wide the terminal is.
inline constexpr std::size_t widestText = 100;

/// `text`, which may have lines, with each of them broken at blanks so that it ends by column
/// `width` when its first column is `indent`; further lines get that many blanks in front. A word
/// that is longer stays whole. Without a width the text stays as it is.
std::string wrapped(std::string_view text, std::size_t indent, std::optional<std::size_t> width);

/// `text`, shortened to `columns` by "…" in its middle where it is wider: of a path both the
/// beginning and the name at its end tell most.
std::string shortened(const std::string& text, std::size_t columns);

} // namespace korvane
