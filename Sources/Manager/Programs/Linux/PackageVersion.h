#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvane {

/// "ID-VERSION_ID" of the text of an os-release file (freedesktop os-release), the ID alone where
/// there is no version; empty without an ID.
std::string systemName(std::string_view osRelease);

/// The upstream part of a Debian version up to its second number: "0.5" of "1:0.5.10-2+b1"; absent
/// when it does not begin with a number.
std::optional<std::string> upstreamSeries(std::string_view version);

/// The package that `output` of "dpkg-query -S PATH" names for `path`; the first of several.
std::optional<std::string> owningPackage(std::string_view output, std::string_view path);

} // namespace korvane
