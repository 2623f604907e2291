#include "Ambrel/Base/RandomName.h"

#include <random>
#include <string_view>

namespace ambrel {

std::string randomName() {
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr int length = 16; // 64 bits: nobody meets the same one twice
    std::random_device source;
    std::string name = ".korvane-";
    for (int i = 0; i < length; ++i) name += digits[source() % digits.size()];
    return name;
}

} // namespace ambrel
