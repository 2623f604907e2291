#include "korvane-runner/Bus/MatchRule.h"

#include <cstdlib>

using namespace korvane::runner::bus;

namespace {

void checkKeys(const std::string& text, const MatchRule& original) {
    const auto rule = MatchRule::parse(text);
    if (!rule || rule->parts.size() != original.parts.size()) std::abort();
    for (std::size_t i = 0; i < rule->parts.size(); ++i) {
        if (rule->parts[i].key != original.parts[i].key) std::abort();
    }
}

} // namespace

/// A rule becomes the same one each time, with the same keys; what is none stays as it is.
// NOLINTNEXTLINE(readability-identifier-naming): the name that fuzzing engines call
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    static InstanceNames names{PrivateNames("k_One"), NamePolicy(Secrets::shared)};
    const auto translated = translatedRule(text, names);
    if (translatedRule(text, names) != translated) std::abort();
    const auto rule = MatchRule::parse(text);
    if (!rule && translated != TranslatedRule{std::string(text)}) std::abort();
    if (!rule) return 0;
    checkKeys(translated.rule, *rule);
    if (translated.second) checkKeys(*translated.second, *rule);
    return 0;
}
