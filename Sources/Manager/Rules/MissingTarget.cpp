#include "Manager/Rules/MissingTarget.h"

#include "Ambrel/Platform/FileSystem.h"

namespace korvane {

using ambrel::Path;
using ambrel::ShortcutKind;

namespace {

std::optional<Path> targetOf(const ambrel::InstanceConfig& config) {
    switch (config.kind) {
    case ShortcutKind::web:
        return std::nullopt;
    case ShortcutKind::app:
        return config.targetAppPath;
    case ShortcutKind::file:
        return config.openPath;
    case ShortcutKind::command:
        return config.commandPath;
    }
    return std::nullopt;
}

} // namespace

std::optional<Path> missingTarget(const ambrel::InstanceRecord& record,
                                  const ambrel::UserPlaces& user) {
    auto target = targetOf(record.config);
    // What has no absolute path is an address, or lies wherever it is started.
    if (!target || target->find("://") != Path::npos) return std::nullopt;
    target = user.expandingTilde(*target);
    if (!target->starts_with('/') || !ambrel::fileSystem::isMissing(*target)) return std::nullopt;
    return target;
}

} // namespace korvane
