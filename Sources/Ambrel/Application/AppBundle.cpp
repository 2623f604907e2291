#include "Ambrel/Application/AppBundle.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Pipe.h"
#include "Ambrel/Platform/PropertyList.h"

namespace ambrel {

namespace {

constexpr std::string_view sandboxEntitlement = "com.apple.security.app-sandbox";

/// What the signing tool prints about the bundle. The tool's complaints go to a pipe of their own
/// that nobody reads, so that they do not reach the user's terminal.
std::string entitlements(const Path& appURL, const SystemTools& tools) {
    auto output = Pipe::make();
    const auto complaints = Pipe::make();
    ChildProcess tool({.executable = tools.codesign,
                       .arguments = {"-d", "--entitlements", ":-", "--xml", appURL},
                       .standardOutput = output.writeEnd,
                       .standardError = complaints.writeEnd});
    tool.launch();
    tool.waitUntilExit();
    return output.readToEnd();
}

/// That the key stands there is enough: neither its value nor the tool's exit status counts. A tool
/// that cannot be run says that nothing is known of a sandbox.
bool detectSandbox(const Path& appURL, const SystemTools& tools) {
    // A start that must fail costs more than all the rest.
    if (!fileSystem::isExecutableFile(tools.codesign)) return false;
    try {
        const auto text = entitlements(appURL, tools);
        return utf8::isValid(text) && text.find(sandboxEntitlement) != std::string::npos;
    } catch (const ChildProcessError&) {
        return false;
    } catch (const FileError&) {
        return false;
    }
}

std::string stringFor(const PropertyListDictionary& info, const char* key,
                      const std::string& fallback) {
    const auto entry = info.find(key);
    const auto* text = entry == info.end() ? nullptr : entry->second.string();
    return text == nullptr ? fallback : *text;
}

bool booleanFor(const PropertyListDictionary& info, const char* key) {
    const auto entry = info.find(key);
    return entry != info.end() && entry->second.exactBoolean().value_or(false);
}

} // namespace

Path AppBundle::executableURL() const {
    return paths::join(BundleLayout{url}.executables(), executableName);
}

std::optional<AppBundle> AppBundle::read(const Path& appURL, const SystemTools& tools) {
    const auto info = readPropertyList(BundleLayout{appURL}.infoPlist());
    if (!info) return std::nullopt;
    const std::string fileName(paths::stem(appURL));
    return AppBundle{
        .url = appURL,
        .bundleId = stringFor(*info, "CFBundleIdentifier", fileName),
        .executableName = stringFor(*info, "CFBundleExecutable", fileName),
        .sandboxed = detectSandbox(appURL, tools),
        .prohibitsMultipleInstances = booleanFor(*info, "LSMultipleInstancesProhibited"),
    };
}

} // namespace ambrel
