#include "Ambrel/Formats/IcnsLint.h"

#include "Ambrel/Formats/IcnsPlanes.h"

#include <algorithm>

namespace ambrel::icns {

namespace {

constexpr std::string_view undecodable = "its data does not decode";

std::string pixelText(std::uint32_t width, std::uint32_t height) {
    return std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

/// Judges the elements of one file.
class Linter {
public:
    Linter(const std::vector<Element>& elements, const Decoder& decoder)
        : elements_(elements), decoder_(decoder) {}

    LintEntry entryFor(const Element& element) const {
        LintEntry entry;
        entry.type = element.type;
        entry.payload = payloadOf(element);
        entry.bytes = element.payload.size();
        const auto* info = findType(element.type);
        if (info == nullptr) {
            entry.remark = "the type is not known";
        } else if (info->pixels == 0) {
            entry.showing = Showing::noPicture;
            entry.remark = info->otherwise;
        } else {
            judge(entry, element, *info);
        }
        return entry;
    }

private:
    void judge(LintEntry& entry, const Element& element, const TypeInfo& info) const {
        const auto picture = pictureOf(element, elements_);
        entry.width = picture ? picture->width : info.pixels;
        entry.height = picture ? picture->height : info.pixels;
        entry.remark = isRepeated(element) ? "an earlier element has the same type"
                       : entry.payload == Payload::mask
                           ? problemOfMask(element, info)
                           : problemOfPicture(entry.payload, picture, info);
        if (!entry.remark.empty()) return;
        entry.showing = Showing::shows;
        entry.remark = warningFor(picture);
    }

    bool isRepeated(const Element& element) const {
        const auto first = std::ranges::find(elements_, element.type, &Element::type);
        return first->offset != element.offset;
    }

    std::string problemOfMask(const Element& element, const TypeInfo& info) const {
        if (element.payload.size() < std::size_t{info.pixels} * info.pixels) {
            return "it is too short for " + pixelText(info.pixels, info.pixels);
        }
        const auto uses = [&](const Element& other) {
            const auto* type = findType(other.type);
            return type != nullptr && type->mask == element.type &&
                   payloadOf(other) == Payload::rgb;
        };
        return std::ranges::any_of(elements_, uses) ? "" : "there is no picture for it";
    }

    std::string problemOfPicture(Payload payload, const std::optional<Picture>& picture,
                                 const TypeInfo& info) const {
        const bool works =
            std::ranges::find(info.worksInBundle, payload) != info.worksInBundle.end();
        if (!works) return std::string(info.otherwise);
        if (!picture) return "its header is broken or claims an impossible size";
        if (picture->width != info.pixels || picture->height != info.pixels) {
            return "the type stands for " + pixelText(info.pixels, info.pixels);
        }
        if (!decodes(*picture)) return std::string(undecodable);
        if (payload == Payload::rgb && picture->mask.empty()) {
            return "its mask " + info.mask.name() + " is missing";
        }
        return {};
    }

    bool decodes(const Picture& picture) const {
        const bool needsDecoder =
            picture.payload == Payload::png || picture.payload == Payload::jpeg2000;
        return (needsDecoder && !decoder_) || decode(picture, decoder_).has_value();
    }

    static std::string warningFor(const std::optional<Picture>& picture) {
        if (!picture) return {};
        const bool hasPlanes =
            picture->payload == Payload::argb || picture->payload == Payload::rgb;
        const auto decoded = hasPlanes ? decodePlanes(*picture) : std::nullopt;
        if (!decoded || decoded->unusedBytes > 0) return {};
        return "no byte follows the last plane, so that Macs with Arm processors lose the last "
               "blue value";
    }

    const std::vector<Element>& elements_;
    const Decoder& decoder_;
};

} // namespace

bool LintReport::isClean() const noexcept {
    const auto isFine = [](const LintEntry& entry) {
        return entry.showing == Showing::noPicture ||
               (entry.showing == Showing::shows && entry.remark.empty());
    };
    return defect.empty() && std::ranges::all_of(entries, isFine);
}

LintReport lint(std::string_view file, const Decoder& decoder) {
    const auto contents = readElements(file);
    const Linter linter(contents.elements, decoder);
    LintReport report{{}, contents.defect};
    for (const auto& element : contents.elements) {
        report.entries.push_back(linter.entryFor(element));
    }
    return report;
}

std::string_view nameOf(Payload payload) noexcept {
    switch (payload) {
    case Payload::png:
        return "PNG";
    case Payload::jpeg2000:
        return "JPEG 2000";
    case Payload::argb:
        return "ARGB";
    case Payload::rgb:
        return "run-length RGB";
    case Payload::mask:
        return "mask";
    case Payload::oldColors:
        return "1 to 8 bits a pixel";
    case Payload::nested:
        return "nested icon file";
    case Payload::information:
        return "information";
    case Payload::unknown:
        break;
    }
    return "unknown";
}

} // namespace ambrel::icns
