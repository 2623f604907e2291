#pragma once

#include "Ambrel/Formats/Icns.h"

namespace ambrel::icns {

/// What an element is worth where the file is the icon of an application bundle.
enum class Showing {
    shows,
    doesNotShow,
    noPicture, ///< it is not meant to show: information, another appearance
};

/// What is to be said about one element.
struct LintEntry {
    TypeCode type;
    Payload payload = Payload::unknown;
    std::uint32_t width = 0; ///< of its picture or mask; 0 where there is none
    std::uint32_t height = 0;
    std::size_t bytes = 0; ///< of its data, without the element's header
    Showing showing = Showing::doesNotShow;
    std::string remark; ///< why it does not show, or what else to know: a clause; else empty
};

struct LintReport {
    std::vector<LintEntry> entries; ///< one for each element, in the order of the file
    std::string defect;             ///< as of Contents
    /// Whether everything that is meant to show does and the file is whole.
    bool isClean() const noexcept;
};

/// Looks at an icon file as an application bundle uses it. Without a decoder the pixels of PNG and
/// JPEG 2000 are not looked at.
LintReport lint(std::string_view file, const Decoder& decoder = nullptr);

/// "PNG", "JPEG 2000", "ARGB", "run-length RGB", "mask" and so on.
std::string_view nameOf(Payload payload) noexcept;

} // namespace ambrel::icns
