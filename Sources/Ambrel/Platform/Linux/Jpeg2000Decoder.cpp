#include "Ambrel/Graphics/NearestByte.h"
#include "Ambrel/Platform/Linux/ImageDecoders.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <span>

// Before the library's own header, whose functions it renames.
#include "LazyOpenJpeg.h"

#include <openjpeg.h>

namespace ambrel::images {

namespace {

struct DestroyCodec {
    void operator()(opj_codec_t* codec) const noexcept { opj_destroy_codec(codec); }
};
struct DestroyStream {
    void operator()(opj_stream_t* stream) const noexcept { opj_stream_destroy(stream); }
};
struct DestroyImage {
    void operator()(opj_image_t* image) const noexcept { opj_image_destroy(image); }
};
using OwnedCodec = std::unique_ptr<opj_codec_t, DestroyCodec>;
using OwnedStream = std::unique_ptr<opj_stream_t, DestroyStream>;
using OwnedPicture = std::unique_ptr<opj_image_t, DestroyImage>;

struct Input {
    std::string_view bytes;
    std::size_t position = 0;
};

constexpr auto endOfInput = static_cast<OPJ_SIZE_T>(-1);

OPJ_SIZE_T readInput(void* buffer, OPJ_SIZE_T size, void* user) {
    auto& input = *static_cast<Input*>(user);
    const auto count = std::min<std::size_t>(size, input.bytes.size() - input.position);
    if (count == 0) return endOfInput;
    std::memcpy(buffer, input.bytes.data() + input.position, count);
    input.position += count;
    return count;
}

OPJ_OFF_T skipInput(OPJ_OFF_T distance, void* user) {
    auto& input = *static_cast<Input*>(user);
    const auto rest = static_cast<OPJ_OFF_T>(input.bytes.size() - input.position);
    if (distance < 0 || rest == 0) return -1;
    const auto skipped = std::min(distance, rest);
    input.position += static_cast<std::size_t>(skipped);
    return skipped;
}

OPJ_BOOL seekInput(OPJ_OFF_T position, void* user) {
    auto& input = *static_cast<Input*>(user);
    if (position < 0 || static_cast<std::size_t>(position) > input.bytes.size()) return OPJ_FALSE;
    input.position = static_cast<std::size_t>(position);
    return OPJ_TRUE;
}

OwnedStream streamOf(Input& input) {
    OwnedStream stream(opj_stream_default_create(OPJ_TRUE));
    opj_stream_set_read_function(stream.get(), readInput);
    opj_stream_set_skip_function(stream.get(), skipInput);
    opj_stream_set_seek_function(stream.get(), seekInput);
    opj_stream_set_user_data(stream.get(), &input, nullptr);
    opj_stream_set_user_data_length(stream.get(), input.bytes.size());
    return stream;
}

/// One component of the picture, as bytes; it may have fewer pixels than the picture.
class Plane {
public:
    explicit Plane(const opj_image_comp_t& component) : component_(component) {}

    bool isUsable() const {
        return component_.data != nullptr && component_.w > 0 && component_.h > 0 &&
               component_.dx > 0 && component_.dy > 0 && component_.prec >= 1 &&
               component_.prec <= 24;
    }
    std::uint8_t at(std::uint32_t x, std::uint32_t y) const {
        const auto column = std::min(x / component_.dx, component_.w - 1);
        const auto row = std::min(y / component_.dy, component_.h - 1);
        const std::int64_t stored = component_.data[std::size_t(row) * component_.w + column];
        const std::int64_t count = std::int64_t{1} << component_.prec;
        const std::int64_t lowest = component_.sgnd != 0 ? -count / 2 : 0;
        const std::int64_t highest = count - 1;
        const auto value = std::clamp<std::int64_t>(stored - lowest, 0, highest);
        return static_cast<std::uint8_t>((value * 255 + highest / 2) / highest);
    }

private:
    const opj_image_comp_t& component_;
};

void convertFromYcc(std::uint8_t* pixel) {
    const float y = pixel[0];
    const float cb = static_cast<float>(pixel[1]) - 128;
    const float cr = static_cast<float>(pixel[2]) - 128;
    pixel[0] = nearestByte(y + 1.402F * cr);
    pixel[1] = nearestByte(y - 0.344136F * cb - 0.714136F * cr);
    pixel[2] = nearestByte(y + 1.772F * cb);
}

/// One or two components are grey, three or four are colours; the second or fourth is alpha.
std::optional<Image> imageOf(const opj_image_t& picture) {
    const auto count = std::min(picture.numcomps, 4U);
    std::vector<Plane> planes;
    for (const auto& component : std::span(picture.comps, count)) planes.emplace_back(component);
    if (!std::all_of(planes.begin(), planes.end(), [](auto& p) { return p.isUsable(); })) {
        return std::nullopt;
    }
    const bool grey = count < 3;
    const std::array<std::size_t, 4> from{0, grey ? 0U : 1U, grey ? 0U : 2U, grey ? 1U : 3U};
    auto image = emptyImage(picture.x1 - picture.x0, picture.y1 - picture.y0);
    auto* pixel = image.pixels.data();
    for (std::uint32_t y = 0; y < image.height; ++y) {
        for (std::uint32_t x = 0; x < image.width; ++x, pixel += 4) {
            for (std::size_t i = 0; i < 4; ++i) {
                pixel[i] = from[i] < count ? planes[from[i]].at(x, y) : 255;
            }
            if (!grey && picture.color_space == OPJ_CLRSPC_SYCC) convertFromYcc(pixel);
        }
    }
    return image;
}

bool hasPlausibleSize(const opj_image_t& picture, std::size_t fileSize) {
    constexpr OPJ_UINT32 mostComponents = 5;
    return picture.x1 > picture.x0 && picture.y1 > picture.y0 && picture.numcomps >= 1 &&
           picture.numcomps <= mostComponents &&
           isPlausibleSize(picture.x1 - picture.x0, picture.y1 - picture.y0, fileSize);
}

} // namespace

std::optional<Image> decodeJpeg2000(std::string_view file) {
    loadOpenJpeg();
    const bool bare = file.starts_with("\xFF\x4F\xFF\x51"); // without the boxes of a JP2 file
    const OwnedCodec codec(opj_create_decompress(bare ? OPJ_CODEC_J2K : OPJ_CODEC_JP2));
    Input input{file};
    const auto stream = streamOf(input);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    if (!codec || !stream || !opj_setup_decoder(codec.get(), &parameters)) return std::nullopt;

    opj_image_t* header = nullptr;
    const bool read = opj_read_header(stream.get(), codec.get(), &header) != OPJ_FALSE;
    const OwnedPicture picture(header);
    if (!read || !picture || !hasPlausibleSize(*picture, file.size())) return std::nullopt;
    const bool decoded = opj_decode(codec.get(), stream.get(), picture.get()) != OPJ_FALSE &&
                         opj_end_decompress(codec.get(), stream.get()) != OPJ_FALSE;
    return decoded ? imageOf(*picture) : std::nullopt;
}

} // namespace ambrel::images
