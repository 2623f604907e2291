#pragma once

#include <cstddef>
#include <string>

namespace korvane::test {

/// The smallest valid file with `more` (members, each with a comma in front) added.
inline std::string smallestJson(const std::string& more = {}) {
    return R"({"displayName":"Mail","bundleId":"b","instanceHome":"/h")" + more + "}";
}

/// `open` as often as `depth` says, then `inside`, then as many of `close`.
inline std::string nested(std::size_t depth, const std::string& open, const std::string& inside,
                          const std::string& close) {
    std::string text;
    for (std::size_t level = 0; level < depth; ++level) text += open;
    text += inside;
    for (std::size_t level = 0; level < depth; ++level) text += close;
    return text;
}

} // namespace korvane::test
