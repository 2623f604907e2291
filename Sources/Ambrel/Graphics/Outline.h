#pragma once

#include <array>
#include <vector>

namespace ambrel {

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

/// A rectangle; `min` is its lower left corner where y grows upwards.
struct Box {
    Point min;
    Point max;

    double width() const noexcept { return max.x - min.x; }
    double height() const noexcept { return max.y - min.y; }
    double midX() const noexcept { return min.x + width() / 2; }
    double midY() const noexcept { return min.y + height() / 2; }
    bool operator==(const Box&) const = default;
};

/// Closed curves, such as the shapes of letters, to be filled by the non-zero winding rule.
class Outline {
public:
    enum class Kind { move, line, curve, close };
    struct Segment {
        Kind kind;
        std::array<Point, 3> points{}; ///< move and line use the first, a curve ends at the third
    };

    void moveTo(Point to);
    void lineTo(Point to);
    /// A parabola with one control point; kept as the cubic curve of the same shape.
    void parabolaTo(Point control, Point to);
    void curveTo(Point control1, Point control2, Point to);
    void close();

    /// Adds `other` moved by `offset`.
    void add(const Outline& other, Point offset);
    Outline movedBy(Point offset) const;
    /// Larger by `factor`, seen from the origin.
    Outline scaledBy(double factor) const;

    const std::vector<Segment>& segments() const noexcept { return segments_; }
    /// The smallest box that holds the curves themselves, not their control points. All zero for
    /// an outline without curves.
    Box boundingBox() const;

private:
    Point current_;
    std::vector<Segment> segments_;
};

} // namespace ambrel
