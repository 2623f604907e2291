#pragma once

#include "Ambrel/Graphics/Canvas.h"
#include "Ambrel/Instance/InstanceConfig.h"
#include "Ambrel/Platform/Images.h"

#include <array>
#include <stdexcept>

namespace ambrel {

/// Draws a label onto an icon and writes a multi-size icon file.
struct IconComposer {
    IconComposer() = delete;

    struct ComposeError : std::runtime_error {
        enum class Kind { noSourceImage, destinationFailed };

        static ComposeError noSourceImage(const Path& source); // "No readable image in " + path
        static ComposeError destinationFailed(); // "Could not write the composited .icns"
        std::string description() const { return what(); }

        Kind kind;
        Path subject; ///< the source; empty for destinationFailed

    private:
        ComposeError(Kind errorKind, const std::string& text, const Path& path);
    };

    /// The sides of the images that are written, in pixels, in this order.
    static constexpr std::array<std::uint32_t, 7> outputSizes{1024, 512, 256, 128, 64, 32, 16};

    /// Draws the label over the widest image of `source` and writes the icon file `destination`,
    /// replacing what is there in one step. An empty label text, or a system without any font,
    /// gives the image alone. Throws ComposeError, and LibraryError when the system lacks a library
    /// that is needed; nothing is written then, and what was at `destination` stays.
    static void compose(const Path& source, const IconLabel& label, const Path& destination);

    /// The bytes of the file that compose() writes, for who wants to know why they cannot be
    /// written or does not want a file. Throws ComposeError noSourceImage and LibraryError.
    static std::string composed(const Path& source, const IconLabel& label);

    // The steps of compose.

    /// The widest image of the file, the first among equals; absent when it has none that can be
    /// read, or cannot be read itself.
    static std::optional<Image> loadLargestImage(const Path& url);
    /// Draws the label onto the square image `context`.
    static void drawLabel(const IconLabel& label, const images::BoldSansFont& font, Image& context);
    /// The shapes of the text on a line that starts at the origin.
    static Outline textPath(const std::string& text, const images::BoldSansFont& font,
                            double fontSize);
    /// Six hexadecimal digits, with or without "#" before and blanks around them; white for
    /// anything else.
    static Color color(std::string_view fromHex);
};

} // namespace ambrel
