#pragma once

#include "Ambrel/Base/Path.h"
#include "korvane-runner/Desktop/WindowFrame.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvane::runner {

/// What a web window is like before anybody has moved it: 1160 by 780.
inline constexpr int standardWidth = 1160;
inline constexpr int standardHeight = 780;

/// Where a window stood when it was last closed, in a small file in the instance's home.
class FrameFile {
public:
    /// That of the instance with this identifier.
    FrameFile(const ambrel::Path& home, std::string_view bundleId);

    /// The frame to begin with. What the file does not tell, or tells beyond all reason, is as for
    /// a window that nobody has moved; never fails.
    WindowFrame read() const noexcept;

    /// A failure is swallowed: the next window opens where the one before did.
    void write(const WindowFrame& frame) const noexcept;

    /// The file's text. Reading one takes nothing but this form; absent for another.
    static std::string format(const WindowFrame& frame);
    static std::optional<WindowFrame> parse(std::string_view text);

    const ambrel::Path& path() const noexcept { return path_; }

private:
    ambrel::Path path_; ///< empty where there is no home
};

} // namespace korvane::runner
