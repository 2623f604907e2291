#include "Ambrel/Graphics/Outline.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ambrel {

namespace {

Point between(Point from, Point to, double part) {
    return {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part};
}

Point sum(Point left, Point right) { return {left.x + right.x, left.y + right.y}; }

/// The part of a cubic Bézier curve in one coordinate.
using Cubic = std::array<double, 4>;

double valueAt(const Cubic& c, double t) {
    const double s = 1 - t;
    return s * s * s * c[0] + 3 * s * s * t * c[1] + 3 * s * t * t * c[2] + t * t * t * c[3];
}

struct Range {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void include(double value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    void includeAt(const Cubic& cubic, double t) {
        if (t > 0 && t < 1) include(valueAt(cubic, t));
    }
    /// The ends, and the turning points, where the derivative is zero.
    void include(const Cubic& cubic) {
        include(cubic[0]);
        include(cubic[3]);
        const double a = cubic[3] - 3 * cubic[2] + 3 * cubic[1] - cubic[0];
        const double b = 2 * (cubic[2] - 2 * cubic[1] + cubic[0]);
        const double c = cubic[1] - cubic[0];
        const double discriminant = b * b - 4 * a * c;
        if (discriminant < 0) return;
        // The form that loses no digits, and that holds for a parabola (a = 0) too.
        const double q = -(b + std::copysign(std::sqrt(discriminant), b)) / 2;
        if (a != 0) includeAt(cubic, q / a);
        if (q != 0) includeAt(cubic, c / q);
    }
};

} // namespace

void Outline::moveTo(Point to) {
    segments_.push_back({Kind::move, {to}});
    current_ = to;
}

void Outline::lineTo(Point to) {
    segments_.push_back({Kind::line, {to}});
    current_ = to;
}

void Outline::parabolaTo(Point control, Point to) {
    curveTo(between(current_, control, 2.0 / 3), between(to, control, 2.0 / 3), to);
}

void Outline::curveTo(Point control1, Point control2, Point to) {
    segments_.push_back({Kind::curve, {control1, control2, to}});
    current_ = to;
}

void Outline::close() { segments_.push_back({Kind::close, {}}); }

void Outline::add(const Outline& other, Point offset) {
    segments_.reserve(segments_.size() + other.segments_.size());
    for (auto segment : other.segments_) {
        for (auto& point : segment.points) point = sum(point, offset);
        segments_.push_back(segment);
    }
    current_ = sum(other.current_, offset);
}

Outline Outline::movedBy(Point offset) const {
    Outline result;
    result.add(*this, offset);
    return result;
}

Outline Outline::scaledBy(double factor) const {
    auto result = *this;
    for (auto& segment : result.segments_) {
        for (auto& point : segment.points) point = {point.x * factor, point.y * factor};
    }
    result.current_ = {current_.x * factor, current_.y * factor};
    return result;
}

Box Outline::boundingBox() const {
    Range x;
    Range y;
    Point from;
    for (const auto& [kind, points] : segments_) {
        if (kind == Kind::close) continue; // leads back to where a curve began
        const auto to = kind == Kind::curve ? points[2] : points[0];
        if (kind == Kind::line) {
            x.include(Cubic{from.x, from.x, to.x, to.x});
            y.include(Cubic{from.y, from.y, to.y, to.y});
        } else if (kind == Kind::curve) {
            x.include(Cubic{from.x, points[0].x, points[1].x, to.x});
            y.include(Cubic{from.y, points[0].y, points[1].y, to.y});
        }
        from = to;
    }
    if (x.low > x.high) return {};
    return {{x.low, y.low}, {x.high, y.high}};
}

} // namespace ambrel
