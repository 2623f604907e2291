#include "Ambrel/Formats/IcnsLint.h"

#include <cstdlib>

using namespace ambrel::icns;

/// What is read from any bytes is the same after it was written and read again.
// NOLINTNEXTLINE(readability-identifier-naming): the name that fuzzing engines call
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    const auto noDecoder = [](Payload, std::string_view) { return std::optional<ambrel::Image>(); };
    lint(file, noDecoder);
    for (const auto& picture : pictures(file)) {
        const auto image = decode(picture, noDecoder);
        if (!image || (image->width != 16 && image->width != 32)) continue;
        Writer writer;
        writer.addRunLength(*image);
        const auto written = writer.file();
        const auto again = pictures(written);
        if (again.size() != 1 || decode(again[0], noDecoder) != image) std::abort();
    }
    return 0;
}
