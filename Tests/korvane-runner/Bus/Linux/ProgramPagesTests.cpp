#include "korvane-runner/Bus/Linux/ProgramPages.h"

#include "Support/Files.h"

#include <doctest/doctest.h>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

/// A part of this process's memory that comes from the program's file and cannot be written.
struct Mapping {
    std::size_t begin;
    std::size_t end;
    std::size_t kilobytes; ///< that are in memory
};

// Each begins with a line "BEGIN-END RIGHTS OFFSET DEVICE INODE FILE"; "NAME: VALUE" lines follow.
std::vector<Mapping> mappings() {
    const auto own = std::filesystem::read_symlink("/proc/self/exe").string();
    std::istringstream lines(readFile("/proc/self/smaps"));
    std::vector<Mapping> found;
    bool isOwn = false;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string first;
        std::string second;
        words >> first >> second;
        const auto dash = first.find('-');
        if (dash != std::string::npos) {
            isOwn = second[1] == '-' && line.ends_with(" " + own);
            if (isOwn)
                found.push_back({std::stoul(first, nullptr, 16),
                                 std::stoul(first.substr(dash + 1), nullptr, 16), 0});
        } else if (isOwn && first == "Rss:") {
            found.back().kilobytes = std::stoul(second);
        }
    }
    return found;
}

/// A sanitizer has room between what programs have, which nobody is to read.
[[gnu::no_sanitize_address]] void readAll() {
    for (const auto& mapping : mappings()) {
        for (auto address = mapping.begin; address < mapping.end; address += 4096) {
            static_cast<void>(*reinterpret_cast<const volatile char*>(address));
        }
    }
}

std::size_t inMemory() {
    std::size_t sum = 0;
    for (const auto& mapping : mappings()) sum += mapping.kilobytes;
    return sum;
}

} // namespace

TEST_CASE("what a process has read of its program is not in its memory until it is needed again") {
    readAll();
    const auto all = inMemory();

    forgetProgramPages();
    const auto needed = inMemory();
    readAll();

    CHECK(needed < all);
    CHECK(inMemory() > needed);
}

} // namespace korvane::test
