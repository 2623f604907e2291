#include "Support/Builders.h"

namespace korvane::test {

using namespace ambrel;

InstanceConfig smallestConfig() {
    InstanceConfig config;
    config.displayName = "Mail";
    config.bundleId = "app.example.mail";
    config.instanceHome = "~/Instances/Mail";
    return config;
}

InstanceConfig applicationWithOverride(const std::string& key, const std::string& value) {
    auto config = smallestConfig();
    config.kind = ShortcutKind::app;
    config.infoPlistOverrides[key] = value;
    return config;
}

InstanceConfig commandConfig(const Path& home, const std::string& commandPath,
                             const std::vector<std::string>& arguments) {
    auto config = smallestConfig();
    config.kind = ShortcutKind::command;
    config.instanceHome = home;
    config.commandPath = commandPath;
    config.commandArgs = arguments;
    return config;
}

InstanceConfig fullConfig() {
    return {"Work Mail",
            "app.example.work-mail",
            ShortcutKind::command,
            "/Applications/Mail.app",
            "~/Instances/Work",
            Strategy::wrapperIdentity,
            {"--a", "{{instanceHome}}/b"},
            {{"K", "v"}, {"L", "{{instanceHome}}"}},
            {{"LSUIElement", "yes"}},
            true,
            true,
            IconLabel{"w1", "#FF0000", IconLabel::Position::center},
            true,
            true,
            false,
            "https://example.org/?q=1",
            "~/a.pdf",
            "/bin/echo",
            {"x", ""},
            "~/work"};
}

std::string xmlEscaped(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        if (character == '&')
            escaped += "&amp;";
        else if (character == '<')
            escaped += "&lt;";
        else if (character == '>')
            escaped += "&gt;";
        else
            escaped += character;
    }
    return escaped;
}

std::string xmlPlist(const std::string& insideOfRoot) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n<dict>" +
           insideOfRoot + "</dict>\n</plist>\n";
}

AppBundleBuilder& AppBundleBuilder::executable(const std::string& name, const std::string& script) {
    scripts_["Contents/MacOS/" + name] = script;
    return entry("CFBundleExecutable", "<string>" + xmlEscaped(name) + "</string>");
}

AppBundleBuilder& AppBundleBuilder::entry(const std::string& key, const std::string& xmlValue) {
    entries_[key] = xmlValue;
    return *this;
}

AppBundleBuilder& AppBundleBuilder::file(const Path& name, const std::string& bytes) {
    files_[name] = bytes;
    return *this;
}

AppBundleBuilder& AppBundleBuilder::infoPlist(const std::string& bytes) {
    bytes_ = bytes;
    return *this;
}

AppBundleBuilder& AppBundleBuilder::withoutInfoPlist() {
    withoutPlist_ = true;
    return *this;
}

Path AppBundleBuilder::write() const {
    makeFolder(bundle_ + "/Contents/MacOS");
    std::string inside;
    for (const auto& [key, value] : entries_) inside += "<key>" + key + "</key>" + value;
    if (!withoutPlist_)
        writeFile(bundle_ + "/Contents/Info.plist", bytes_.value_or(xmlPlist(inside)));
    for (const auto& [name, bytes] : files_) writeFile(bundle_ + "/" + name, bytes);
    for (const auto& [name, body] : scripts_) writeScript(bundle_ + "/" + name, body);
    return bundle_;
}

Path writeWrapper(const Path& bundle, const InstanceConfig& config) {
    return writeWrapper(bundle, config.encode());
}

Path writeWrapper(const Path& bundle, const std::string& json) {
    writeFile(bundle + "/Contents/Resources/instance.json", json);
    return bundle;
}

} // namespace korvane::test
