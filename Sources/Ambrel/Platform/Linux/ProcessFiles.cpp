#include "Ambrel/Platform/Linux/ProcessFiles.h"

#include "Ambrel/Base/TextParts.h"
#include "Ambrel/Platform/OwnedFd.h"
#include "Ambrel/Platform/Posix/Retry.h"

#include <array>
#include <charconv>
#include <fcntl.h>
#include <unistd.h>

namespace ambrel::processFiles {

std::string contentOf(int folder, const char* name) {
    const OwnedFd file(
        retryInterrupted([&] { return ::openat(folder, name, O_RDONLY | O_CLOEXEC); }));
    std::string content;
    if (!file) return content;
    std::array<char, 4096> buffer{};
    while (true) {
        const auto count =
            retryInterrupted([&] { return ::read(file.get(), buffer.data(), buffer.size()); });
        if (count <= 0) return content;
        content.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

std::optional<long> numberIn(std::string_view text) {
    long number = 0;
    const auto* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest == text.data()) return std::nullopt;
    return number;
}

std::optional<std::string> variableIn(std::string_view environment, std::string_view name) {
    while (!environment.empty()) {
        auto entry = takeUntil(environment, '\0');
        if (!entry.starts_with(name)) continue;
        entry.remove_prefix(name.size());
        if (entry.starts_with('=')) return std::string(entry.substr(1));
    }
    return std::nullopt;
}

} // namespace ambrel::processFiles
