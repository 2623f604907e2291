#include "Ambrel/Platform/ProcessEnvironment.h"

#include "Ambrel/Platform/Posix/Environ.h"

#include <cstdlib>
#include <string_view>

namespace ambrel {

Environment processEnvironment() {
    Environment environment;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const auto equals = text.find('=');
        if (equals == std::string_view::npos) continue;
        environment.emplace(text.substr(0, equals), text.substr(equals + 1));
    }
    return environment;
}

void setProcessVariables(const Environment& variables) noexcept {
    constexpr int replacing = 1;
    for (const auto& [name, value] : variables) ::setenv(name.c_str(), value.c_str(), replacing);
}

} // namespace ambrel
