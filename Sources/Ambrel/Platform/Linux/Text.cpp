#include "Ambrel/Platform/Text.h"

#include "Ambrel/Base/Utf8.h"

#include <memory>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace ambrel::text {

namespace {

bool isBlank(char32_t c) {
    return c == '\t' || u_charType(static_cast<UChar32>(c)) == U_SPACE_SEPARATOR;
}

bool isBlankOrNewline(char32_t c) {
    const bool lineBreak = (c >= 0x0A && c <= 0x0D) || c == 0x85;
    return c == '\t' || lineBreak || (U_GET_GC_MASK(static_cast<UChar32>(c)) & U_GC_Z_MASK) != 0;
}

template <class Class> std::string trimming(std::string_view text, const Class& isInClass) {
    std::size_t start = text.size();
    std::size_t end = 0;
    auto rest = text;
    while (!rest.empty()) {
        const auto from = text.size() - rest.size();
        const auto character = utf8::takeFirst(rest);
        if (character && isInClass(*character)) continue;
        start = std::min(start, from);
        end = text.size() - rest.size();
    }
    return start < end ? std::string(text.substr(start, end - start)) : std::string();
}

icu::StringPiece piece(std::string_view text) {
    return {text.data(), static_cast<std::int32_t>(text.size())};
}

std::string utf8Of(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

/// The user's locale. "C" and "POSIX" stand for no language at all, but their tailored order tells
/// upper from lower case before anything else; the root order is meant.
icu::Locale listLocale() {
    const auto& locale = icu::Locale::getDefault();
    return std::string_view(locale.getVariant()) == "POSIX" ? icu::Locale::getRoot() : locale;
}

} // namespace

std::string trimmingWhitespace(std::string_view text) { return trimming(text, isBlank); }

std::string trimmingWhitespaceAndNewlines(std::string_view text) {
    return trimming(text, isBlankOrNewline);
}

std::string lowercased(std::string_view text) {
    return utf8Of(icu::UnicodeString::fromUTF8(piece(text)).toLower(icu::Locale::getRoot()));
}

std::string uppercased(std::string_view text) {
    return utf8Of(icu::UnicodeString::fromUTF8(piece(text)).toUpper(icu::Locale::getRoot()));
}

bool isAlphanumeric(char32_t character) {
    constexpr auto wanted = U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK;
    return (U_GET_GC_MASK(static_cast<UChar32>(character)) & wanted) != 0;
}

std::size_t columnsOf(char32_t character) {
    const auto c = static_cast<UChar32>(character);
    // A soft hyphen is shown, though it is a format character; the later parts of a Korean syllable
    // are letters that join the first.
    constexpr char32_t softHyphen = 0xAD;
    const bool joinsSyllable =
        u_getIntPropertyValue(c, UCHAR_HANGUL_SYLLABLE_TYPE) == U_HST_VOWEL_JAMO ||
        u_getIntPropertyValue(c, UCHAR_HANGUL_SYLLABLE_TYPE) == U_HST_TRAILING_JAMO;
    constexpr auto joining = U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK;
    if (character == softHyphen) return 1;
    if (joinsSyllable || (U_GET_GC_MASK(c) & joining) != 0) return 0;
    const auto width = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

std::size_t columnsOf(std::string_view text) {
    constexpr char32_t replacement = 0xFFFD;
    std::size_t columns = 0;
    while (!text.empty()) columns += columnsOf(utf8::takeFirst(text).value_or(replacement));
    return columns;
}

NameOrder::NameOrder() : collator_(nullptr) {
    auto status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(listLocale(), status));
    if (U_FAILURE(status)) return;
    collator->setStrength(icu::Collator::SECONDARY); // accents count, case does not
    collator_ = collator.release();
}

NameOrder::~NameOrder() { delete static_cast<icu::Collator*>(collator_); }

bool NameOrder::precedes(std::string_view left, std::string_view right) const {
    if (collator_ == nullptr) return left < right;
    auto status = U_ZERO_ERROR;
    const auto* collator = static_cast<const icu::Collator*>(collator_);
    const auto order = collator->compareUTF8(piece(left), piece(right), status);
    return U_SUCCESS(status) && order == UCOL_LESS;
}

} // namespace ambrel::text
