#pragma once

#include <cstddef>
#include <optional>

/// What is asked of a terminal.
namespace ambrel::terminal {

/// How many columns the terminal behind the descriptor has; absent where it is none, or does not
/// know.
std::optional<std::size_t> columnsOf(int descriptor) noexcept;

} // namespace ambrel::terminal
