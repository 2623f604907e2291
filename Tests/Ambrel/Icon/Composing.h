#pragma once

#include "Ambrel/Icon/IconComposer.h"
#include "Ambrel/Icon/ImageReader.h"
#include "Support/Pictures.h"

namespace korvane::test {

/// A PNG with the image.
inline Path writePicture(const TempDir& tmp, const ambrel::Image& image,
                         const std::string& name = "source.png") {
    return writeFile(tmp / name, ambrel::images::encodePng(image));
}

/// The images of the icon that `source` with `label` is composed to.
inline std::vector<ambrel::Image> composed(const TempDir& tmp, const ambrel::Image& source,
                                           const ambrel::IconLabel& label) {
    const auto destination = tmp / "composed.icns";
    ambrel::IconComposer::compose(writePicture(tmp, source), label, destination);
    return ambrel::imagesIn(readFile(destination));
}

} // namespace korvane::test
