#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ambrel {

/// What number a web instance shows on its icon.
struct WebBadgeState {
    std::optional<std::int64_t> apiBadge; ///< set by the page, never negative; wins once set
    std::int64_t titleBadge = 0;          ///< last number found in the page title

    /// Takes the count that the page set; below 0 counts as 0. It hides the title's count for
    /// good, even when it is 0.
    void setAPIBadge(std::int64_t count);
    /// Takes the count out of a page title.
    void setTitle(std::string_view title);

    /// The number in the first round brackets of `title` that hold only a number, blanks and a
    /// trailing "+", else in the first such square brackets, else 0. Bytes of `title` that are not
    /// UTF-8 match nothing.
    static std::int64_t unreadCount(std::string_view title);

    /// The badge in decimal, absent for "show no badge".
    std::optional<std::string> label() const;

    bool operator==(const WebBadgeState&) const = default;
};

} // namespace ambrel
