#pragma once

#include <algorithm>
#include <string>
#include <string_view>

/// What many small formats are made of.
namespace ambrel {

/// Takes what stands before the next `end` off the front of `text`, and that `end` too. All of it
/// where there is none; empty at the end of the text, and where there is nothing before `end`.
constexpr std::string_view takeUntil(std::string_view& text, char end) {
    const auto part = text.substr(0, text.find(end));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return part;
}

/// A copy of the text under `key`, empty where there is none.
template <class Map> std::string valueOf(const Map& map, const typename Map::key_type& key) {
    const auto found = map.find(key);
    return found == map.end() ? std::string() : found->second;
}

} // namespace ambrel
