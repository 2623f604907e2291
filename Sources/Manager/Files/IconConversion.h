#pragma once

#include "Ambrel/Instance/InstanceConfig.h"

#include <optional>
#include <string>

namespace korvane {

/// Throws Refusal unusableIcon unless `picture`, one that was chosen, is a file.
void requirePicture(const ambrel::Path& picture);

/// Whether the file is an Apple icon file by its first bytes, which a bundle takes as it is.
bool isIconFile(const ambrel::Path& file);

/// `picture` as an icon file, since a bundle shows no other picture: itself where it is one, else
/// what convertToIconFile() makes of it in `folder`. Throws what that throws.
ambrel::Path iconFileOf(const ambrel::Path& picture, const ambrel::Path& folder);

/// Writes an icon file with the image of `picture`, any image file, to `destination`. Throws
/// Refusal unusableIcon when it is no image that can be read, FileError and LibraryError.
void convertToIconFile(const ambrel::Path& picture, const ambrel::Path& destination);

/// The same, saying whether it was done: for a program that is worth having without its icon.
bool tryConvertToIconFile(const ambrel::Path& picture, const ambrel::Path& destination) noexcept;

/// Why a label cannot be drawn on this machine, as a sentence; absent when it can, or when there is
/// nothing to draw.
std::optional<std::string> obstacleTo(const ambrel::IconLabel& label);

} // namespace korvane
