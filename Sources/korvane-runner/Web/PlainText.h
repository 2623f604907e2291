#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What a page or a site wrote, made fit to be shown or kept outside of it.
namespace korvane::runner::plainText {

/// `text` with a blank for each control character and line break, and U+FFFD for what is not UTF-8.
std::string oneLine(std::string_view text);

/// The same, but line breaks remain, each as "\n".
std::string lines(std::string_view text);

/// As much of the start of `text` as fits into `most` bytes without breaking a character.
std::string_view cut(std::string_view text, std::size_t most);

/// `text` as it stands in HTML, between tags and in attributes in quotes.
std::string html(std::string_view text);

} // namespace korvane::runner::plainText
