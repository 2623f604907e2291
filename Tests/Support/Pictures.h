#pragma once

#include "Ambrel/Graphics/Image.h"
#include "Support/Environment.h"

#include <array>
#include <functional>

namespace korvane::test {

using Pixel = std::array<std::uint8_t, 4>; ///< red, green, blue, alpha

inline constexpr Pixel black{0, 0, 0, 255};
inline constexpr Pixel white{255, 255, 255, 255};
inline constexpr Pixel red{255, 0, 0, 255};
inline constexpr Pixel green{0, 255, 0, 255};
inline constexpr Pixel blue{0, 0, 255, 255};
inline constexpr Pixel clear{0, 0, 0, 0};

ambrel::Image picture(std::uint32_t width, std::uint32_t height,
                      const std::function<Pixel(std::uint32_t x, std::uint32_t y)>& pixelAt);
ambrel::Image filledPicture(std::uint32_t width, std::uint32_t height, const Pixel& pixel);
Pixel pixelAt(const ambrel::Image& image, std::uint32_t x, std::uint32_t y);
/// Whether no component differs by more than `tolerance`.
bool isNear(const Pixel& left, const Pixel& right, int tolerance);

/// Fonts for the code under test in place of the machine's, until the end of the scope: Liberation
/// Sans Bold and its family, or none.
class Fonts {
public:
    enum class Installed { liberation, none };
    explicit Fonts(const TempDir& tmp, Installed installed = Installed::liberation);

private:
    ScopedVariable variable_;
};

} // namespace korvane::test
