#include "Manager/Base/NearestWord.h"

#include <algorithm>
#include <numeric>

namespace korvane {

namespace {

/// How many single-character changes lead from one word to the other, a swap of neighbours
/// counting as one.
std::size_t distance(std::string_view left, std::string_view right) {
    std::vector<std::vector<std::size_t>> table(left.size() + 1,
                                                std::vector<std::size_t>(right.size() + 1));
    for (std::size_t i = 0; i <= left.size(); ++i) table[i][0] = i;
    std::iota(table[0].begin(), table[0].end(), std::size_t{0});
    for (std::size_t i = 1; i <= left.size(); ++i) {
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t change = left[i - 1] == right[j - 1] ? 0 : 1;
            table[i][j] =
                std::min({table[i - 1][j] + 1, table[i][j - 1] + 1, table[i - 1][j - 1] + change});
            const bool swapped =
                i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
            if (swapped) table[i][j] = std::min(table[i][j], table[i - 2][j - 2] + 1);
        }
    }
    return table[left.size()][right.size()];
}

} // namespace

std::string nearest(std::string_view typed, const std::vector<std::string>& known) {
    // Long words are no misspellings, and the table would grow with their product.
    if (typed.empty() || typed.size() > 64) return {};
    std::string best;
    std::size_t least = typed.size() < 4 ? 2 : 3;
    for (const auto& candidate : known) {
        if (candidate.size() > 64) continue;
        const auto changes = distance(typed, candidate);
        if (changes < least) {
            least = changes;
            best = candidate;
        }
    }
    return best;
}

} // namespace korvane
