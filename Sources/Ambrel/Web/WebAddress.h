#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ambrel {

/// What keeps a text from being the address of a web site.
enum class WebAddressFault {
    empty,   ///< there is nothing but blanks
    scheme,  ///< what stands before "://" is no scheme
    noHost,  ///< nothing names the host
    badHost, ///< a blank or control character in the host, or a bracket that is not closed
    port,    ///< what follows the host's colon is no number
};

/// The address that a person means by `raw`: without the white space around it, as it stands where
/// it names a scheme ("://" anywhere, "data:" or "file:" in front), else "https://" and the text.
/// Absent where that is no address. What may follow the host is not looked at, and neither is
/// anything behind "data:" and "file:".
std::optional<std::string> normalizedURL(std::string_view raw);

/// Why normalizedURL() has nothing for `raw`; absent where it has.
std::optional<WebAddressFault> findWebAddressFault(std::string_view raw);

} // namespace ambrel
