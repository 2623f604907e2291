#include "Ambrel/Wrapper/WrapperGenerator.h"

#include "Ambrel/Application/DeclaredIcon.h"
#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Icon/IconComposer.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Wrapper/InfoPlist.h"

namespace ambrel {

using GenError = WrapperGenerator::GenError;

GenError::GenError(Kind errorKind, const std::string& text, const Path& path)
    : std::runtime_error(utf8::oneLine(text)), kind(errorKind), subject(path) {}

GenError GenError::runnerMissing(const Path& runner) {
    return {Kind::runnerMissing, "Runner binary not found: " + runner, runner};
}

GenError GenError::badTarget(const Path& app) {
    return {Kind::badTarget, "Not a readable target .app: " + app, app};
}

namespace {

constexpr unsigned executableMode = 0755;

void requireRunner(const Path& runner) {
    if (!fileSystem::exists(runner)) throw GenError::runnerMissing(runner);
}

std::optional<AppBundle> requireTarget(const InstanceConfig& config) {
    if (config.kind != ShortcutKind::app) return std::nullopt;
    auto target = AppBundle::read(config.targetAppURL());
    if (!target) throw GenError::badTarget(config.targetAppURL());
    return target;
}

void replaceFolders(const BundleLayout& bundle) {
    if (fileSystem::exists(bundle.bundle)) fileSystem::removeTree(bundle.bundle);
    fileSystem::createFolders(bundle.executables());
    fileSystem::createFolders(bundle.resources());
}

void copyRunner(const Path& runner, const BundleLayout& bundle) {
    fileSystem::copyFile(runner, bundle.runner());
    fileSystem::setPermissions(bundle.runner(), executableMode);
}

std::optional<Path> iconSource(const WrapperGenerator::Options& options,
                               const std::optional<AppBundle>& target) {
    const auto& custom = options.customIcon;
    if (custom && fileSystem::exists(*custom)) return custom;
    return target ? declaredIcon(target->url) : std::nullopt;
}

/// Whether the labelled icon was written. A label that cannot be drawn is not worth failing for,
/// whatever the reason: the wrapper gets the plain icon.
bool tryCompose(const Path& source, const IconLabel& label, const Path& destination) {
    try {
        IconComposer::compose(source, label, destination);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace

Path WrapperGenerator::generate(const Path& outputDir, const Options& options) const {
    requireRunner(options.runnerBinary); // both checks come before the first write
    const auto target = requireTarget(options.config);
    const auto bundle = BundleLayout::wrapper(outputDir, options.config.displayName);
    replaceFolders(bundle);
    copyRunner(options.runnerBinary, bundle);
    fileSystem::write(bundle.instanceJson(), options.config.encode());
    const auto iconFile = installIcon(options, target, bundle.resources());
    writeInfoPlist(options, iconFile, bundle.contents());
    fileSystem::write(bundle.pkgInfo(), "APPL????");
    return bundle.bundle;
}

std::optional<std::string> WrapperGenerator::installIcon(const Options& options,
                                                         const std::optional<AppBundle>& target,
                                                         const Path& resources) const {
    const auto source = iconSource(options, target);
    if (!source) return std::nullopt;
    const auto destination = paths::join(resources, BundleLayout::iconFileName);
    const auto& label = options.config.iconLabel;
    const bool composed = label && label->isVisible() && tryCompose(*source, *label, destination);
    if (!composed) fileSystem::copyFile(*source, destination);
    return std::string(BundleLayout::iconName);
}

void WrapperGenerator::writeInfoPlist(const Options& options,
                                      const std::optional<std::string>& iconFile,
                                      const Path& contents) const {
    const auto icon = options.hideWrapperIcon ? WrapperIcon::hidden : WrapperIcon::shown;
    fileSystem::write(paths::join(contents, "Info.plist"),
                      xmlPropertyList(infoPlistFor(options.config, iconFile, icon)));
}

PropertyListValue WrapperGenerator::coercePlistValue(const std::string& text) {
    return coercedPlistValue(text);
}

} // namespace ambrel
