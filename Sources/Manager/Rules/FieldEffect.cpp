#include "Manager/Rules/FieldEffect.h"

#include "Ambrel/Instance/ConfigFields.h"
#include "Manager/Base/Refusal.h"

namespace korvane {

using ambrel::ShortcutKind;

namespace {

/// "app or command".
std::string kindsHeeding(std::string_view key) {
    std::string list;
    for (const auto& [kind, word] : ambrel::RawValues<ShortcutKind>::table) {
        if (!isHeeded(key, kind)) continue;
        list += (list.empty() ? "" : " or ") + std::string(word);
    }
    return list;
}

} // namespace

bool isHeeded(std::string_view key, ShortcutKind kind) {
    bool heeded = true;
    ambrel::forEachField([&](const auto& field) {
        if (key == field.key) heeded = field.kinds.contains(kind);
    });
    return heeded;
}

void requireHeeded(const std::string& name, std::string_view key, ShortcutKind kind) {
    if (isHeeded(key, kind)) return;
    throw Refusal(Refusal::Kind::hasNoEffect, name,
                  name + " means nothing to an instance of the kind " +
                      std::string(rawValue(kind)) + ": it is for the kind " + kindsHeeding(key) +
                      ".");
}

} // namespace korvane
