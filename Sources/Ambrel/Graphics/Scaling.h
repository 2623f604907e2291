#pragma once

#include "Ambrel/Graphics/Image.h"

#include <vector>

namespace ambrel {

/// Draws one picture at several sizes. Where a side gets smaller each pixel is the mean of the area
/// that it covers, so that fine lines fade rather than break up; where it gets larger the picture
/// is interpolated smoothly. Colours count by their alpha: what cannot be seen leaves no fringe.
class Scaler {
public:
    /// `source` must not be empty and must live as long as the scaler.
    explicit Scaler(const Image& source) : source_(source) {}

    /// The whole picture stretched to the size. Pixels that are fully transparent are all zero.
    /// Quicker when larger sizes are asked for before smaller ones.
    Image scaledTo(std::uint32_t width, std::uint32_t height);

    /// Premultiplied components of a picture, 0 to 255.
    struct Pixels {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::vector<float> values;
    };

private:
    bool canReduceFurther(std::uint32_t width, std::uint32_t height) const noexcept;

    const Image& source_;
    /// The last size that was made by taking means. The mean of whole pixels of it is the mean of
    /// the source's pixels in the same area.
    Pixels reduced_;
};

} // namespace ambrel
