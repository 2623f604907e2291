#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Text by the rules of Unicode. Input is UTF-8; bytes that are not count as U+FFFD.
namespace ambrel::text {

/// Without the blanks (general category Zs, and tab) at both ends.
std::string trimmingWhitespace(std::string_view text);
/// Without blanks and line breaks (Z*, tab, U+000A to U+000D, U+0085) at both ends.
std::string trimmingWhitespaceAndNewlines(std::string_view text);
/// Full lower-case and upper-case mapping, the same in every locale.
std::string lowercased(std::string_view text);
std::string uppercased(std::string_view text);
/// A letter, mark or number of any script (L*, M*, N*).
bool isAlphanumeric(char32_t character);

/// How many columns of a terminal the character takes: two where East Asian width makes it wide, as
/// that of ideographs and emoji, none where it stands on the one before it.
std::size_t columnsOf(char32_t character);
/// Of a text in one line.
std::size_t columnsOf(std::string_view text);

/// The order of names in lists: that of the user's locale, without regard to case but with regard
/// to accents. Opening it costs more than comparing; keep one for a whole sort.
class NameOrder {
public:
    NameOrder();
    NameOrder(const NameOrder&) = delete;
    NameOrder& operator=(const NameOrder&) = delete;
    ~NameOrder();

    /// Whether `left` sorts before `right`; equal names do not.
    bool precedes(std::string_view left, std::string_view right) const;

private:
    void* collator_; ///< owned; null where the system has none: bytes are compared then
};

} // namespace ambrel::text
