#include "Ambrel/Platform/Images.h"

#include "Ambrel/Platform/LibraryError.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>

// Before the library's own header, whose functions it renames.
#include "LazyDeflate.h"

#include <libdeflate.h>

namespace ambrel::images {

namespace {

using namespace std::string_view_literals;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t pixelBytes = 4;
/// Higher levels take much longer for a few bytes in a thousand.
constexpr int compressionLevel = 6;

struct FreeCompressor {
    void operator()(libdeflate_compressor* c) const noexcept { libdeflate_free_compressor(c); }
};

/// A row filter of PNG (section 9.2 of its specification): `at` is the byte to be stored, the
/// others are those left of it, above it and left above it.
struct None {
    static constexpr std::uint8_t code = 0;
    static int predicted(int, int, int) { return 0; }
};
struct Sub {
    static constexpr std::uint8_t code = 1;
    static int predicted(int left, int, int) { return left; }
};
struct Up {
    static constexpr std::uint8_t code = 2;
    static int predicted(int, int above, int) { return above; }
};
struct Average {
    static constexpr std::uint8_t code = 3;
    static int predicted(int left, int above, int) { return (left + above) / 2; }
};
struct Paeth {
    static constexpr std::uint8_t code = 4;
    static int predicted(int left, int above, int corner) {
        const int toLeft = std::abs(above - corner);
        const int toAbove = std::abs(left - corner);
        const int toCorner = std::abs(left + above - 2 * corner);
        const int vertical = toAbove <= toCorner ? above : corner;
        return toLeft <= toAbove && toLeft <= toCorner ? left : vertical;
    }
};

/// A row with one black pixel before it, so that each byte has one to its left.
struct Row {
    const std::uint8_t* bytes;
    const std::uint8_t* above;
    std::size_t length;
};

/// Writes the filtered row and returns how far its bytes are from zero in all: a low sum has mostly
/// compressed better.
template <class Filter> std::uint32_t filtered(const Row& row, std::uint8_t* to) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < row.length; ++i) {
        const int predicted =
            Filter::predicted(row.bytes[i - pixelBytes], row.above[i], row.above[i - pixelBytes]);
        const auto byte = static_cast<std::uint8_t>(row.bytes[i] - predicted);
        to[i] = byte;
        sum += static_cast<std::uint32_t>(std::abs(static_cast<std::int8_t>(byte)));
    }
    return sum;
}

/// Appends rows, each with the filter that suits it best.
class FilteredRows {
public:
    FilteredRows(std::size_t length, std::size_t rows) : best_(length), candidate_(length) {
        bytes_.reserve((length + 1) * rows);
    }

    void append(const Row& row) {
        lowest_ = UINT32_MAX;
        tryFilter<None>(row);
        tryFilter<Sub>(row);
        tryFilter<Up>(row);
        tryFilter<Average>(row);
        tryFilter<Paeth>(row);
        bytes_.push_back(code_);
        bytes_.insert(bytes_.end(), best_.begin(), best_.end());
    }
    Bytes take() { return std::move(bytes_); }

private:
    template <class Filter> void tryFilter(const Row& row) {
        const auto sum = filtered<Filter>(row, candidate_.data());
        if (sum >= lowest_) return;
        lowest_ = sum;
        code_ = Filter::code;
        best_.swap(candidate_);
    }

    Bytes bytes_;
    Bytes best_;
    Bytes candidate_;
    std::uint32_t lowest_ = 0;
    std::uint8_t code_ = 0;
};

Bytes filteredRows(const Image& image) {
    const std::size_t length = image.width * pixelBytes;
    Bytes above(pixelBytes + length);
    Bytes current(pixelBytes + length);
    FilteredRows rows(length, image.height);
    for (std::size_t y = 0; y < image.height; ++y) {
        const auto* from = image.pixels.data() + y * length;
        std::copy(from, from + length, current.data() + pixelBytes);
        rows.append({current.data() + pixelBytes, above.data() + pixelBytes, length});
        current.swap(above);
    }
    return rows.take();
}

std::string compressed(const Bytes& bytes) {
    const std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor(
        libdeflate_alloc_compressor(compressionLevel));
    if (!compressor) throw std::bad_alloc();
    const auto bound = libdeflate_zlib_compress_bound(compressor.get(), bytes.size());
    const auto result = std::make_unique_for_overwrite<char[]>(bound);
    const auto size =
        libdeflate_zlib_compress(compressor.get(), bytes.data(), bytes.size(), result.get(), bound);
    return {result.get(), size};
}

void appendNumber(std::string& file, std::size_t number) {
    for (const int shift : {24, 16, 8, 0}) file.push_back(static_cast<char>(number >> shift));
}

void appendChunk(std::string& file, std::string_view type, std::string_view data) {
    appendNumber(file, data.size());
    const auto start = file.size();
    file.append(type).append(data);
    appendNumber(file, libdeflate_crc32(0, file.data() + start, file.size() - start));
}

std::string header(const Image& image) {
    std::string data;
    appendNumber(data, image.width);
    appendNumber(data, image.height);
    data.append("\x08\x06\x00\x00\x00"sv); // 8 bits, RGBA, the usual methods, not interlaced
    return data;
}

} // namespace

std::string encodePng(const Image& image) {
    loadDeflate();
    std::string file("\x89PNG\r\n\x1A\n");
    appendChunk(file, "IHDR", header(image));
    appendChunk(file, "sRGB", "\0"sv); // perceptual
    appendChunk(file, "IDAT", compressed(filteredRows(image)));
    appendChunk(file, "IEND", {});
    return file;
}

} // namespace ambrel::images
