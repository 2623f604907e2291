#include "korvane-runner/Web/FrameFile.h"

#include "Ambrel/Platform/FileSystem.h"

#include <algorithm>
#include <charconv>

namespace korvane::runner {

namespace {

constexpr unsigned ownerFile = 0600;
/// The sides of a window that a person could use, and what the desktop's protocols can say.
constexpr int smallestSide = 64;
constexpr int largestSide = 16'384;
constexpr int farthest = 32'767;

bool takeNumber(std::string_view& text, int& number) {
    if (!text.starts_with(' ')) return false;
    const auto* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data() + 1, end, number);
    text.remove_prefix(static_cast<std::size_t>(stopped - text.data()));
    return error == std::errc();
}

/// Takes "NAME 12 34\n" off the front of `text`, with as many numbers as `numbers` has.
template <class... Numbers>
bool takeLine(std::string_view& text, std::string_view name, Numbers&... numbers) {
    if (!text.starts_with(name)) return false;
    auto rest = text.substr(name.size());
    if (!(takeNumber(rest, numbers) && ...) || !rest.starts_with('\n')) return false;
    text = rest.substr(1);
    return true;
}

bool isSide(int length) { return length >= smallestSide && length <= largestSide; }

bool isPlace(int coordinate) { return coordinate >= -farthest && coordinate <= farthest; }

/// With nothing in it that could make a window which nobody can see.
WindowFrame reasonable(WindowFrame frame) {
    if (!isSide(frame.width) || !isSide(frame.height)) {
        frame.width = standardWidth;
        frame.height = standardHeight;
    }
    const auto& position = frame.position;
    if (position && !(isPlace(position->x) && isPlace(position->y))) frame.position.reset();
    return frame;
}

/// An identifier may hold a slash, and its file must not lie elsewhere for that.
std::string fileName(std::string_view bundleId) {
    auto name = "KorvaneWeb-" + std::string(bundleId);
    std::ranges::replace(name, '/', '_');
    return name;
}

} // namespace

FrameFile::FrameFile(const ambrel::Path& home, std::string_view bundleId) {
    if (!home.empty()) path_ = ambrel::paths::join(home, fileName(bundleId));
}

std::string FrameFile::format(const WindowFrame& frame) {
    auto text = "size " + std::to_string(frame.width) + " " + std::to_string(frame.height) + "\n";
    if (const auto& position = frame.position) {
        text +=
            "position " + std::to_string(position->x) + " " + std::to_string(position->y) + "\n";
    }
    if (frame.maximized) text += "maximized\n";
    return text;
}

std::optional<WindowFrame> FrameFile::parse(std::string_view text) {
    WindowFrame frame;
    if (!takeLine(text, "size", frame.width, frame.height)) return std::nullopt;
    WindowFrame::Position position;
    if (takeLine(text, "position", position.x, position.y)) frame.position = position;
    frame.maximized = takeLine(text, "maximized");
    return text.empty() ? std::optional(frame) : std::nullopt;
}

WindowFrame FrameFile::read() const noexcept {
    WindowFrame standard;
    standard.width = standardWidth;
    standard.height = standardHeight;
    if (path_.empty()) return standard;
    try {
        return reasonable(parse(ambrel::fileSystem::read(path_)).value_or(standard));
    } catch (const std::exception&) {
        return standard; // mostly there is none yet
    }
}

void FrameFile::write(const WindowFrame& frame) const noexcept {
    if (path_.empty()) return;
    try {
        ambrel::fileSystem::replace(path_, format(reasonable(frame)), ownerFile);
    } catch (const std::exception&) {
        // Said in the header.
    }
}

} // namespace korvane::runner
