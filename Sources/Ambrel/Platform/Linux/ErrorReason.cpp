#include "Ambrel/Platform/FileError.h"

#include <cstring>

namespace ambrel {

std::string errorReason(int code) {
    // The manager may set the user's locale; messages stay in one language.
    if (const char* text = strerrordesc_np(code)) return text;
    return "Unknown error " + std::to_string(code);
}

} // namespace ambrel
