#include "Ambrel/Icon/IconComposer.h"

#include "Ambrel/Formats/Icns.h"
#include "Ambrel/Graphics/Scaling.h"
#include "Ambrel/Icon/ImageReader.h"
#include "Ambrel/Icon/LabelLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"

#include <charconv>

namespace ambrel {

using ComposeError = IconComposer::ComposeError;

ComposeError::ComposeError(Kind errorKind, const std::string& text, const Path& path)
    : std::runtime_error(text), kind(errorKind), subject(path) {}

ComposeError ComposeError::noSourceImage(const Path& source) {
    return {Kind::noSourceImage, "No readable image in " + source, source};
}

ComposeError ComposeError::destinationFailed() {
    return {Kind::destinationFailed, "Could not write the composited .icns", {}};
}

namespace {

constexpr Color outlineColor{0, 0, 0, 0.9};
/// The shadow is that of the outline, which lets a little light through itself.
constexpr Color shadowColor{0, 0, 0, 0.5 * outlineColor.alpha};
constexpr Color white{1, 1, 1, 1};

std::optional<std::string> readIfPossible(const Path& file) {
    try {
        return fileSystem::read(file);
    } catch (const FileError&) {
        return std::nullopt; // no more of an image than any other bytes
    }
}

/// A label without a font to draw it is left off: the icon is worth having without.
std::optional<images::BoldSansFont> fontFor(const IconLabel& label) {
    if (!label.isVisible()) return std::nullopt;
    return images::BoldSansFont::nearest(text::uppercased(label.text));
}

void addImage(icns::Writer& writer, const Image& image) {
    if (icns::Writer::takesPng(image.width)) {
        writer.addPng(images::encodePng(image));
    } else {
        writer.addRunLength(image);
    }
}

std::string composedFile(const Image& source, const IconLabel& label) {
    const auto font = fontFor(label);
    Scaler scaler(source);
    icns::Writer writer;
    for (const auto size : IconComposer::outputSizes) {
        auto image = scaler.scaledTo(size, size);
        if (font) IconComposer::drawLabel(label, *font, image);
        addImage(writer, image);
    }
    return writer.file();
}

} // namespace

void IconComposer::compose(const Path& source, const IconLabel& label, const Path& destination) {
    const auto file = composed(source, label);
    try {
        fileSystem::replace(destination, file);
    } catch (const FileError&) {
        throw ComposeError::destinationFailed();
    }
}

std::string IconComposer::composed(const Path& source, const IconLabel& label) {
    const auto image = loadLargestImage(source);
    if (!image) throw ComposeError::noSourceImage(source);
    return composedFile(*image, label);
}

std::optional<Image> IconComposer::loadLargestImage(const Path& url) {
    const auto file = readIfPossible(url);
    return file ? widestImageIn(*file) : std::nullopt;
}

void IconComposer::drawLabel(const IconLabel& label, const images::BoldSansFont& font,
                             Image& context) {
    if (!label.isVisible()) return;
    const auto text = text::uppercased(label.text);
    const auto boxAt = [&](double fontSize) {
        return textPath(text, font, fontSize).boundingBox();
    };
    const auto layout = layOutLabel(boxAt, label.position, context.width);
    if (!layout) return;
    const auto path = textPath(text, font, layout->fontSize).movedBy(layout->shift);
    const auto stroked = [&](const Outline& outline) {
        return images::strokedCoverage(outline, layout->outlineWidth, context.width,
                                       context.height);
    };

    const auto shadow = stroked(path.movedBy({0, -layout->shadowDrop}));
    paint(context, blurred(shadow, layout->shadowBlur / 2), shadowColor);
    paint(context, stroked(path), outlineColor);
    // Covers the inner half of the outline.
    paint(context, images::filledCoverage(path, context.width, context.height),
          color(label.colorHex));
}

Outline IconComposer::textPath(const std::string& text, const images::BoldSansFont& font,
                               double fontSize) {
    return font.outline(text, fontSize);
}

Color IconComposer::color(std::string_view fromHex) {
    const auto trimmed = text::trimmingWhitespace(fromHex);
    std::string_view digits = trimmed;
    if (digits.starts_with('#')) digits.remove_prefix(1);
    if (digits.size() != 6) return white;
    if (digits.starts_with('+') && digits[1] != '-') digits.remove_prefix(1);
    std::int32_t value = 0;
    const auto* end = digits.data() + digits.size();
    const auto [parsed, error] = std::from_chars(digits.data(), end, value, 16);
    if (error != std::errc() || parsed != end) return white;
    const auto component = [&](int shift) { return ((value >> shift) & 0xFF) / 255.0; };
    return {component(16), component(8), component(0), 1};
}

} // namespace ambrel
