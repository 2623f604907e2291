#include "Ambrel/Platform/PropertyList.h"
#include "Ambrel/Base/CodingError.h"

#include <cstdlib>

using namespace ambrel;

/// A property list that can be read and written is the same after it was read again.
// NOLINTNEXTLINE(readability-identifier-naming): the name that fuzzing engines call
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto dictionary = parsePropertyList({reinterpret_cast<const char*>(data), size});
    if (!dictionary) return 0;
    try {
        const auto xml = xmlPropertyList(*dictionary);
        const auto again = parsePropertyList(xml);
        if (!again || xmlPropertyList(*again) != xml) std::abort();
    } catch (const EncodingError&) {
        return 0; // it holds a value that is never written, a date for example
    }
    return 0;
}
