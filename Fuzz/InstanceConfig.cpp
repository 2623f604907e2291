#include "Ambrel/Instance/InstanceConfig.h"

#include <cstdlib>

using ambrel::InstanceConfig;

/// A configuration that can be read is the same after it was written and read again.
// NOLINTNEXTLINE(readability-identifier-naming): the name that fuzzing engines call
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const auto config = InstanceConfig::decode({reinterpret_cast<const char*>(data), size});
        const auto json = config.encode();
        if (InstanceConfig::decode(json).encode() != json) std::abort();
    } catch (const ambrel::DecodingError&) {
        return 0; // what most inputs deserve
    }
    return 0;
}
