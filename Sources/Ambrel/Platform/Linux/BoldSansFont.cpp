#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/Images.h"

#include <cstring>
#include <unicode/ubidi.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

// Before the libraries' own headers, whose functions they rename.
#include "LazyFontconfig.h"
#include "LazyHarfBuzz.h"

#include <fontconfig/fontconfig.h>
#include <hb.h>

namespace ambrel::images {

namespace {

template <auto destroy> struct Destroy {
    template <class T> void operator()(T* object) const noexcept { destroy(object); }
};
template <class T, auto destroy> using Owned = std::unique_ptr<T, Destroy<destroy>>;

// Lambdas, because the libraries' functions have no address before they are loaded.
using OwnedConfig = Owned<FcConfig, [](FcConfig* c) { FcConfigDestroy(c); }>;
using OwnedPattern = Owned<FcPattern, [](FcPattern* p) { FcPatternDestroy(p); }>;
using OwnedCharSet = Owned<FcCharSet, [](FcCharSet* s) { FcCharSetDestroy(s); }>;
using OwnedFontSet = Owned<FcFontSet, [](FcFontSet* s) { FcFontSetDestroy(s); }>;
using OwnedBlob = Owned<hb_blob_t, [](hb_blob_t* b) { hb_blob_destroy(b); }>;
using OwnedFace = Owned<hb_face_t, [](hb_face_t* f) { hb_face_destroy(f); }>;
using OwnedFont = Owned<hb_font_t, [](hb_font_t* f) { hb_font_destroy(f); }>;
using OwnedBuffer = Owned<hb_buffer_t, [](hb_buffer_t* b) { hb_buffer_destroy(b); }>;
using OwnedDrawing = Owned<hb_draw_funcs_t, [](hb_draw_funcs_t* d) { hb_draw_funcs_destroy(d); }>;
using OwnedBidi = Owned<UBiDi, [](UBiDi* b) { ubidi_close(b); }>;

/// Where Helvetica is missing: fonts made to its measures, then other sans-serif fonts. Systems
/// with a usual configuration of fonts know more of them by the last name.
constexpr const char* families[] = {"Helvetica",       "Nimbus Sans", "TeX Gyre Heros",
                                    "Liberation Sans", "Arimo",       "Arial",
                                    "DejaVu Sans",     "Noto Sans",   "sans-serif"};

const FcChar8* fcText(const char* text) { return reinterpret_cast<const FcChar8*>(text); }

OwnedCharSet visibleCharacters(std::string_view text) {
    OwnedCharSet set(FcCharSetCreate());
    while (!text.empty()) {
        const auto character = utf8::takeFirst(text);
        if (character && u_isgraph(static_cast<UChar32>(*character))) {
            FcCharSetAddChar(set.get(), *character);
        }
    }
    return set;
}

OwnedPattern wantedFont(FcConfig* config, std::string_view text) {
    OwnedPattern pattern(FcPatternCreate());
    for (const char* family : families) {
        FcPatternAddString(pattern.get(), FC_FAMILY, fcText(family));
    }
    FcPatternAddInteger(pattern.get(), FC_WEIGHT, FC_WEIGHT_BOLD);
    FcPatternAddInteger(pattern.get(), FC_SLANT, FC_SLANT_ROMAN);
    FcPatternAddInteger(pattern.get(), FC_WIDTH, FC_WIDTH_NORMAL);
    FcPatternAddBool(pattern.get(), FC_OUTLINE, FcTrue);
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    FcPatternAddBool(pattern.get(), FC_COLOR, FcFalse);
    FcPatternAddCharSet(pattern.get(), FC_CHARSET, visibleCharacters(text).get());
    FcConfigSubstitute(config, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    return pattern;
}

/// Whether the font's file has outlines of a kind that can be read.
bool hasOutlines(const FcPattern* font) {
    FcBool outline = FcFalse;
    FcBool color = FcFalse;
    FcChar8* format = nullptr;
    FcPatternGetBool(font, FC_OUTLINE, 0, &outline);
    FcPatternGetBool(font, FC_COLOR, 0, &color);
    const bool named = FcPatternGetString(font, FC_FONTFORMAT, 0, &format) == FcResultMatch;
    const std::string_view name = named ? reinterpret_cast<const char*>(format) : "";
    return outline && !color && (name == "TrueType" || name == "CFF");
}

/// Sets the axes of a variable font, given as "wght=700,wdth=100".
void setVariations(hb_font_t* font, std::string_view list) {
    std::vector<hb_variation_t> variations;
    while (!list.empty()) {
        const auto item = list.substr(0, list.find(','));
        list.remove_prefix(std::min(list.size(), item.size() + 1));
        hb_variation_t variation{};
        const auto length = static_cast<int>(item.size());
        if (hb_variation_from_string(item.data(), length, &variation)) {
            variations.push_back(variation);
        }
    }
    hb_font_set_variations(font, variations.data(), static_cast<unsigned>(variations.size()));
}

/// Null when the file cannot be read as a font.
OwnedFont openFont(const FcPattern* pattern) {
    FcChar8* file = nullptr;
    FcChar8* variations = nullptr;
    int index = 0;
    if (FcPatternGetString(pattern, FC_FILE, 0, &file) != FcResultMatch) return nullptr;
    FcPatternGetInteger(pattern, FC_INDEX, 0, &index);
    const OwnedBlob blob(hb_blob_create_from_file_or_fail(reinterpret_cast<const char*>(file)));
    if (!blob) return nullptr;
    constexpr int faceBits = 0xFFFF; // above them is the number of a variable font's instance
    const OwnedFace face(hb_face_create(blob.get(), static_cast<unsigned>(index & faceBits)));
    if (hb_face_get_glyph_count(face.get()) == 0) return nullptr;
    OwnedFont font(hb_font_create(face.get()));
    if (FcPatternGetString(pattern, FC_FONT_VARIATIONS, 0, &variations) == FcResultMatch) {
        setVariations(font.get(), reinterpret_cast<const char*>(variations));
    }
    return font;
}

Point pointOf(float x, float y) { return {x, y}; }

/// Collects a glyph's shape in an Outline, in the font's own units.
OwnedDrawing outlineDrawing() {
    OwnedDrawing drawing(hb_draw_funcs_create());
    auto* d = drawing.get();
    using State = hb_draw_state_t*;
    hb_draw_funcs_set_move_to_func(
        d,
        [](auto*, void* outline, State, float x, float y, void*) {
            static_cast<Outline*>(outline)->moveTo(pointOf(x, y));
        },
        nullptr, nullptr);
    hb_draw_funcs_set_line_to_func(
        d,
        [](auto*, void* outline, State, float x, float y, void*) {
            static_cast<Outline*>(outline)->lineTo(pointOf(x, y));
        },
        nullptr, nullptr);
    hb_draw_funcs_set_quadratic_to_func(
        d,
        [](auto*, void* outline, State, float cx, float cy, float x, float y, void*) {
            static_cast<Outline*>(outline)->parabolaTo(pointOf(cx, cy), pointOf(x, y));
        },
        nullptr, nullptr);
    hb_draw_funcs_set_cubic_to_func(
        d,
        [](auto*, void* outline, State, float ax, float ay, float bx, float by, float x, float y,
           void*) {
            static_cast<Outline*>(outline)->curveTo(pointOf(ax, ay), pointOf(bx, by),
                                                    pointOf(x, y));
        },
        nullptr, nullptr);
    hb_draw_funcs_set_close_path_func(
        d, [](auto*, void* outline, State, void*) { static_cast<Outline*>(outline)->close(); },
        nullptr, nullptr);
    return drawing;
}

/// Part of a text that runs in one direction.
struct Run {
    std::int32_t start = 0;
    std::int32_t length = 0;
    bool rightToLeft = false;
};

/// The runs of a line from left to right, as they are seen.
std::vector<Run> visualRuns(const icu::UnicodeString& text) {
    auto status = U_ZERO_ERROR;
    const OwnedBidi bidi(ubidi_open());
    ubidi_setPara(bidi.get(), text.getBuffer(), text.length(), UBIDI_DEFAULT_LTR, nullptr, &status);
    const auto count = ubidi_countRuns(bidi.get(), &status);
    if (U_FAILURE(status)) return {{0, text.length(), false}};
    std::vector<Run> runs(static_cast<std::size_t>(count));
    for (std::int32_t i = 0; i < count; ++i) {
        auto& run = runs[static_cast<std::size_t>(i)];
        run.rightToLeft = ubidi_getVisualRun(bidi.get(), i, &run.start, &run.length) == UBIDI_RTL;
    }
    return runs;
}

OwnedBuffer shapedRun(hb_font_t* font, const icu::UnicodeString& text, const Run& run) {
    OwnedBuffer buffer(hb_buffer_create());
    hb_buffer_add_utf16(buffer.get(), reinterpret_cast<const std::uint16_t*>(text.getBuffer()),
                        text.length(), static_cast<unsigned>(run.start), run.length);
    hb_buffer_guess_segment_properties(buffer.get());
    hb_buffer_set_direction(buffer.get(), run.rightToLeft ? HB_DIRECTION_RTL : HB_DIRECTION_LTR);
    // The language would be that of the environment: the same label looks the same everywhere.
    hb_buffer_set_language(buffer.get(), hb_language_from_string("und", -1));
    hb_shape(font, buffer.get(), nullptr, 0);
    return buffer;
}

/// Draws a run's glyphs and moves `pen` to its end. Glyph 0 stands for what the font lacks.
void addRun(Outline& outline, Point& pen, hb_font_t* font, hb_draw_funcs_t* drawing,
            hb_buffer_t* buffer) {
    unsigned count = 0;
    const auto* glyphs = hb_buffer_get_glyph_infos(buffer, &count);
    const auto* positions = hb_buffer_get_glyph_positions(buffer, &count);
    for (unsigned i = 0; i < count; ++i) {
        Outline glyph;
        if (glyphs[i].codepoint != 0) {
            hb_font_get_glyph_shape(font, glyphs[i].codepoint, drawing, &glyph);
        }
        outline.add(glyph, {pen.x + positions[i].x_offset, pen.y + positions[i].y_offset});
        pen.x += positions[i].x_advance;
        pen.y += positions[i].y_advance;
    }
}

} // namespace

struct BoldSansFont::Storage {
    OwnedFont font;
};

std::optional<BoldSansFont> BoldSansFont::nearest(std::string_view text) {
    loadFontconfig();
    loadHarfBuzz();
    // A configuration of our own: the one that the library shares inside the process is not ours
    // to set up, and would keep the fonts of the first call.
    const OwnedConfig config(FcInitLoadConfigAndFonts());
    if (!config) return std::nullopt;
    const auto wanted = wantedFont(config.get(), text);
    auto result = FcResultNoMatch;
    const OwnedFontSet fonts(FcFontSort(config.get(), wanted.get(), FcFalse, nullptr, &result));
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        if (!hasOutlines(fonts->fonts[i])) continue;
        const OwnedPattern chosen(FcFontRenderPrepare(config.get(), wanted.get(), fonts->fonts[i]));
        auto font = openFont(chosen.get());
        if (font) return BoldSansFont(std::make_shared<const Storage>(Storage{std::move(font)}));
    }
    return std::nullopt;
}

Outline BoldSansFont::outline(std::string_view text, double fontSize) const {
    auto* font = storage_->font.get();
    const auto drawing = outlineDrawing();
    const auto utf16 = icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    Outline outline;
    Point pen;
    for (const auto& run : visualRuns(utf16)) {
        addRun(outline, pen, font, drawing.get(), shapedRun(font, utf16, run).get());
    }
    return outline.scaledBy(fontSize / hb_face_get_upem(hb_font_get_face(font)));
}

} // namespace ambrel::images
