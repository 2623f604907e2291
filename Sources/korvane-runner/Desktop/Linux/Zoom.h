#pragma once

namespace korvane::runner::zoom {

constexpr double normal = 1.0;

/// The next of the usual steps, or the last one itself.
double above(double level);
double below(double level);

} // namespace korvane::runner::zoom
