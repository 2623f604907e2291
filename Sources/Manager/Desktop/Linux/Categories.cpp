#include "Manager/Desktop/Linux/Categories.h"

#include <algorithm>
#include <array>
#include <vector>

namespace korvane::registration {

namespace {

/// "Audio" and "Video" are main categories too, but only beside "AudioVideo".
constexpr std::array<std::string_view, 13> mainCategories{
    "AudioVideo", "Audio",  "Video",   "Development", "Education", "Game",   "Graphics",
    "Network",    "Office", "Science", "Settings",    "System",    "Utility"};

template <class List> bool isAmong(const List& list, std::string_view name) {
    return std::find(std::begin(list), std::end(list), name) != std::end(list);
}

std::vector<std::string_view> parts(std::string_view list) {
    std::vector<std::string_view> names;
    while (!list.empty()) {
        const auto end = list.find(';');
        names.push_back(list.substr(0, end));
        list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
    }
    return names;
}

} // namespace

std::string mainCategoriesIn(std::string_view list) {
    std::vector<std::string_view> found;
    for (const auto name : parts(list)) {
        if (isAmong(mainCategories, name) && !isAmong(found, name)) found.push_back(name);
    }
    const bool wantsBoth = isAmong(found, "Audio") || isAmong(found, "Video");
    if (wantsBoth && !isAmong(found, "AudioVideo")) found.insert(found.begin(), "AudioVideo");
    std::string text;
    for (const auto name : found) text.append(name).append(";");
    return text;
}

} // namespace korvane::registration
