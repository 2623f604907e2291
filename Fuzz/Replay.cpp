#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

// NOLINTNEXTLINE(readability-identifier-naming): the name that fuzzing engines call
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void replay(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(stream), {});
    if (stream.bad() || !stream.is_open())
        throw std::runtime_error("Not readable: " + file.string());
    // A copy of its own size: a read beyond its end does not stay within a string's spare room.
    const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(data.data(), data.size());
}

} // namespace

/// Runs the fuzz target on every file of the folder given: found once, tested ever after.
int main(int argc, char** argv) {
    try {
        if (argc != 2) throw std::runtime_error("Give one folder of inputs");
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
            replay(entry.path());
            ++count;
        }
        if (count == 0) throw std::runtime_error("There are no inputs");
        std::printf("%d inputs\n", count);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
