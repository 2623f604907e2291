#include "Ambrel/Instance/InstanceConfig.h"

#include "Ambrel/Base/Utf8.h"
#include "ConfigTexts.h"
#include "Support/Builders.h"
#include "Support/Expect.h"

#include <nlohmann/json.hpp>

using namespace ambrel;
using namespace korvane::test;
using nlohmann::json;

namespace {

void checkSame(const InstanceConfig& left, const InstanceConfig& right) {
    CHECK(left.displayName == right.displayName);
    CHECK(left.bundleId == right.bundleId);
    CHECK(left.kind == right.kind);
    CHECK(left.targetAppPath == right.targetAppPath);
    CHECK(left.instanceHome == right.instanceHome);
    CHECK(left.strategy == right.strategy);
    CHECK(left.extraArgs == right.extraArgs);
    CHECK(left.environment == right.environment);
    CHECK(left.infoPlistOverrides == right.infoPlistOverrides);
    CHECK(left.registerAsBrowser == right.registerAsBrowser);
    CHECK(left.openWithPassthrough == right.openWithPassthrough);
    CHECK((left.iconLabel == right.iconLabel));
    CHECK(left.menuBarIcon == right.menuBarIcon);
    CHECK(left.menuBarIconTemplate == right.menuBarIconTemplate);
    CHECK(left.shareUserFolders == right.shareUserFolders);
    CHECK(left.url == right.url);
    CHECK(left.openPath == right.openPath);
    CHECK(left.commandPath == right.commandPath);
    CHECK(left.commandArgs == right.commandArgs);
    CHECK(left.workingDirectory == right.workingDirectory);
}

} // namespace

TEST_CASE("the smallest valid file has three keys and yields an app record with the defaults") {
    const auto config = InstanceConfig::decode(
        R"({"displayName":"Mail","bundleId":"app.example","instanceHome":"~/m"})");

    CHECK(config.displayName == "Mail");
    CHECK(config.bundleId == "app.example");
    CHECK(config.instanceHome == "~/m");
    CHECK(config.kind == ShortcutKind::app);
    CHECK(config.strategy == Strategy::homeOverride);
    CHECK(config.targetAppPath.empty());
    CHECK(config.extraArgs.empty());
    CHECK(config.commandArgs.empty());
    CHECK(config.environment.empty());
    CHECK(config.infoPlistOverrides.empty());
    CHECK_FALSE(config.registerAsBrowser);
    CHECK_FALSE(config.openWithPassthrough);
    CHECK_FALSE(config.menuBarIcon);
    CHECK_FALSE(config.menuBarIconTemplate);
    CHECK(config.shareUserFolders);
    CHECK_FALSE(config.iconLabel.has_value());
    CHECK_FALSE(config.url.has_value());
    CHECK_FALSE(config.openPath.has_value());
    CHECK_FALSE(config.commandPath.has_value());
    CHECK_FALSE(config.workingDirectory.has_value());
}

TEST_CASE("shareUserFolders false is kept as false and absence gives true") {
    CHECK_FALSE(
        InstanceConfig::decode(smallestJson(R"(,"shareUserFolders":false)")).shareUserFolders);
    CHECK(InstanceConfig::decode(smallestJson()).shareUserFolders);
    CHECK(InstanceConfig::decode(smallestJson(R"(,"shareUserFolders":null)")).shareUserFolders);
}

TEST_CASE("a strategy of null gives homeOverride") {
    CHECK(InstanceConfig::decode(smallestJson(R"(,"strategy":null)")).strategy ==
          Strategy::homeOverride);
}

TEST_CASE("encoding a record without url produces no url key at all") {
    const auto written = json::parse(smallestConfig().encode());

    for (const auto* key : {"url", "openPath", "commandPath", "workingDirectory", "iconLabel"}) {
        CAPTURE(key);
        CHECK_FALSE(written.contains(key));
    }
}

TEST_CASE("encoding a record with empty extraArgs still writes an empty list") {
    CHECK(contains(smallestConfig().encode(), "\"extraArgs\": []"));
}

TEST_CASE("every field that is not optional is written, including those with their defaults") {
    const auto written = json::parse(smallestConfig().encode());

    CHECK(written.size() == 15);
    CHECK(written.at("kind") == "app");
    CHECK(written.at("targetAppPath") == "");
    CHECK(written.at("strategy") == "home-override");
    CHECK(written.at("environment") == json::object());
    CHECK(written.at("infoPlistOverrides") == json::object());
    CHECK(written.at("commandArgs") == json::array());
    for (const auto* key :
         {"registerAsBrowser", "openWithPassthrough", "menuBarIcon", "menuBarIconTemplate"}) {
        CAPTURE(key);
        CHECK(written.at(key) == false);
    }
    CHECK(written.at("shareUserFolders") == true);
}

TEST_CASE("a full record writes all twenty keys with exactly these spellings") {
    const auto written = json::parse(fullConfig().encode());

    Strings keys;
    for (const auto& [key, value] : written.items()) keys.push_back(key);
    CHECK(keys == Strings{"bundleId",
                          "commandArgs",
                          "commandPath",
                          "displayName",
                          "environment",
                          "extraArgs",
                          "iconLabel",
                          "infoPlistOverrides",
                          "instanceHome",
                          "kind",
                          "menuBarIcon",
                          "menuBarIconTemplate",
                          "openPath",
                          "openWithPassthrough",
                          "registerAsBrowser",
                          "shareUserFolders",
                          "strategy",
                          "targetAppPath",
                          "url",
                          "workingDirectory"});
    CHECK(written.at("iconLabel") ==
          json{{"text", "w1"}, {"colorHex", "#FF0000"}, {"position", "center"}});
    CHECK(written.at("strategy") == "wrapper-identity");
    CHECK(written.at("kind") == "command");
}

TEST_CASE("a record that is encoded and decoded again has the same value in every field") {
    auto config = fullConfig();
    checkSame(InstanceConfig::decode(config.encode()), config);
    checkSame(InstanceConfig::decode(smallestConfig().encode()), smallestConfig());

    const std::string hostile = std::string("a\0b", 3) + "\"\\/\b\f\n\r\t\x1f\x7f" +
                                "\xe2\x80\xa8\xf0\x9f\x98\x80\xef\xbf\xbf</script>";
    config.displayName = config.bundleId = config.targetAppPath = config.instanceHome = hostile;
    config.url = config.openPath = config.commandPath = config.workingDirectory = hostile;
    config.extraArgs = config.commandArgs = {hostile, "", hostile};
    config.environment = config.infoPlistOverrides = {{hostile, hostile}, {"", ""}};
    config.iconLabel = IconLabel{hostile, hostile, IconLabel::Position::top};

    checkSame(InstanceConfig::decode(config.encode()), config);
}

TEST_CASE("the written file is indented by two spaces, sorted by key, with slashes escaped") {
    auto config = smallestConfig();
    config.extraArgs = {"/a/b"};

    const auto text = config.encode();

    CHECK(beginsWith(text, "{\n  \"bundleId\": \"app.example.mail\",\n  \"commandArgs\": []"));
    CHECK(contains(text, "\"extraArgs\": [\n    \"\\/a\\/b\"\n  ]"));
    CHECK(contains(text, "\"instanceHome\": \"~\\/Instances\\/Mail\""));
    CHECK_FALSE(contains(text, "~/"));
    std::size_t position = 0;
    for (const auto* key : {"bundleId", "commandArgs", "displayName", "environment", "extraArgs",
                            "infoPlistOverrides", "instanceHome", "kind", "menuBarIcon",
                            "menuBarIconTemplate", "openWithPassthrough", "registerAsBrowser",
                            "shareUserFolders", "strategy", "targetAppPath"}) {
        const auto found = text.find(std::string("\n  \"") + key + "\": ");
        CAPTURE(key);
        REQUIRE(found != std::string::npos);
        CHECK(found >= position);
        position = found;
    }
}

TEST_CASE("an optional key given as null counts as absent") {
    auto object = json::parse(fullConfig().encode());
    for (auto& [key, value] : object.items()) {
        if (key != "displayName" && key != "bundleId" && key != "instanceHome") value = nullptr;
    }
    auto expected = smallestConfig();
    expected.displayName = fullConfig().displayName;
    expected.bundleId = fullConfig().bundleId;
    expected.instanceHome = fullConfig().instanceHome;

    checkSame(InstanceConfig::decode(object.dump()), expected);
}

TEST_CASE("unknown keys are ignored whatever they hold") {
    const std::string digits(400, '9');
    for (const std::string& value :
         {digits, "-" + digits, digits + "." + digits, std::string("1e999"), std::string("-1e999"),
          std::string("1e-999"), std::string("null"), std::string(R"({"displayName":5,"kind":[]})"),
          std::string(R"([1,"x",{"y":[]}])"), nested(300, "[", "1e999", "]"),
          std::string(R"("\u0000")")}) {
        CAPTURE(value);
        const auto config = InstanceConfig::decode("{\"more\":" + value + "," +
                                                   smallestJson(",\"Kind\":" + value).substr(1));
        CHECK(config.displayName == "Mail");
        CHECK(config.kind == ShortcutKind::app);
    }
}

TEST_CASE("a duplicate key is no error and gives one of its values") {
    const auto config = InstanceConfig::decode(smallestJson(R"(,"displayName":"Other")"));

    CHECK((config.displayName == "Mail" || config.displayName == "Other"));
}

TEST_CASE("a text that is not UTF-8 cannot be encoded, in whichever field it stands") {
    const std::string bad = "x\xff";
    const std::vector<std::function<void(InstanceConfig&)>> edits{
        [&](auto& c) { c.displayName = bad; },
        [&](auto& c) { c.bundleId = bad; },
        [&](auto& c) { c.targetAppPath = bad; },
        [&](auto& c) { c.instanceHome = bad; },
        [&](auto& c) {
            c.extraArgs = {"a", bad};
        },
        [&](auto& c) {
            c.environment = {{bad, "v"}};
        },
        [&](auto& c) {
            c.environment = {{"k", bad}};
        },
        [&](auto& c) {
            c.infoPlistOverrides = {{bad, bad}};
        },
        [&](auto& c) {
            c.iconLabel = IconLabel{bad, "f", IconLabel::Position::top};
        },
        [&](auto& c) { c.url = bad; },
        [&](auto& c) { c.openPath = bad; },
        [&](auto& c) { c.commandPath = bad; },
        [&](auto& c) { c.commandArgs = {bad}; },
        [&](auto& c) { c.workingDirectory = bad; },
    };
    for (std::size_t index = 0; index < edits.size(); ++index) {
        CAPTURE(index);
        auto config = smallestConfig();
        edits[index](config);
        const auto error = expectThrow<EncodingError>([&] { (void)config.encode(); });
        CHECK(isOneLine(error.description()));
        CHECK(utf8::isValid(error.description()));
    }
}

TEST_CASE("the record does not validate what it holds") {
    const auto config = InstanceConfig::decode(
        R"({"displayName":"","bundleId":"","instanceHome":"","kind":"command"})");

    CHECK(config.displayName.empty());
    CHECK(config.kind == ShortcutKind::command);
    CHECK_FALSE(config.commandPath.has_value());
}
