#include "Ambrel/Wrapper/WrapperGenerator.h"

#include "Ambrel/Platform/FileError.h"
#include "Support/Builders.h"
#include "Support/Expect.h"
#include "Support/TempDir.h"

#include <limits>

using namespace ambrel;
using namespace korvane::test;
using Options = WrapperGenerator::Options;

namespace {

Options plainOptions() {
    Options options;
    options.config = smallestConfig();
    return options;
}

PropertyListDictionary plistOf(const Options& options,
                               const std::optional<std::string>& iconFile = {}) {
    const TempDir tmp;
    WrapperGenerator().writeInfoPlist(options, iconFile, tmp.path());
    const auto plist = readPropertyList(tmp / "Info.plist");
    REQUIRE(plist.has_value());
    return *plist;
}

PropertyListDictionary fixedEntries() {
    return {
        {"CFBundleName", {std::string("Mail")}},
        {"CFBundleDisplayName", {std::string("Mail")}},
        {"CFBundleIdentifier", {std::string("app.example.mail")}},
        {"CFBundleExecutable", {std::string("runner")}},
        {"CFBundlePackageType", {std::string("APPL")}},
        {"CFBundleInfoDictionaryVersion", {std::string("6.0")}},
        {"CFBundleShortVersionString", {std::string("1.0")}},
        {"CFBundleVersion", {std::string("1")}},
        {"LSMinimumSystemVersion", {std::string("13.0")}},
        {"NSHighResolutionCapable", {true}},
    };
}

PropertyListArray texts(const Strings& list) {
    PropertyListArray array;
    for (const auto& text : list) array.push_back({text});
    return array;
}

} // namespace

TEST_CASE("a plain configuration without an icon yields exactly the ten fixed keys") {
    CHECK((plistOf(plainOptions()) == fixedEntries()));
}

TEST_CASE("an override of the identifier replaces it in the Info plist but not in instance json") {
    const TempDir tmp;
    auto options = plainOptions();
    options.config.kind = ShortcutKind::web;
    options.config.infoPlistOverrides = {{"CFBundleIdentifier", "org.forced"}};
    options.runnerBinary = writeFile(tmp / "runner-file");

    const auto bundle = WrapperGenerator().generate(tmp / "out", options);

    CHECK(*readPropertyList(bundle + "/Contents/Info.plist")->at("CFBundleIdentifier").string() ==
          "org.forced");
    CHECK(InstanceConfig::decode(readFile(bundle + "/Contents/Resources/instance.json")).bundleId ==
          "app.example.mail");
}

TEST_CASE("an override of LSUIElement with no writes false even when the icon is hidden") {
    auto options = plainOptions();
    options.hideWrapperIcon = true;
    CHECK((plistOf(options).at("LSUIElement") == PropertyListValue{true}));

    options.config.infoPlistOverrides = {{"LSUIElement", "no"}};

    CHECK((plistOf(options).at("LSUIElement") == PropertyListValue{false}));
    options.hideWrapperIcon = false;
    options.config.infoPlistOverrides.clear();
    CHECK(plistOf(options).count("LSUIElement") == 0);
}

TEST_CASE("override values become Booleans, integers or the text as it was passed") {
    const auto integer = [](std::int64_t number) { return PropertyListValue{number}; };
    const auto same = [](const std::string& text) { return PropertyListValue{text}; };
    struct Row {
        std::string text;
        PropertyListValue value;
    };
    std::vector<Row> table{
        {"yes", {true}},
        {"Yes", {true}},
        {" YES", {true}},
        {"TRUE ", {true}},
        {"\ttrue\t", {true}},
        {"\xc2\xa0true\xe3\x80\x80", {true}},
        {"no", {false}},
        {" False", {false}},
        {"12", integer(12)},
        {"+12", integer(12)},
        {"-3", integer(-3)},
        {" 7\t", integer(7)},
        {"0", integer(0)},
        {"1", integer(1)},
        {"-0", integer(0)},
        {"007", integer(7)},
        {"9223372036854775807", integer(std::numeric_limits<std::int64_t>::max())},
        {"-9223372036854775808", integer(std::numeric_limits<std::int64_t>::min())},
    };
    for (const std::string text : {"12a",
                                   "99999999999999999999",
                                   "9223372036854775808",
                                   "-9223372036854775809",
                                   "",
                                   " ",
                                   "1.5",
                                   "  word  ",
                                   "yes\n",
                                   "\n1",
                                   "1\n",
                                   "+",
                                   "-",
                                   "--3",
                                   "+-3",
                                   "0x10",
                                   "1 2",
                                   "1e3",
                                   "1_000",
                                   "\xd9\xa3",
                                   "\xef\xbc\x91",
                                   "\xef\xbd\x99\xef\xbd\x85\xef\xbd\x93",
                                   "y",
                                   "on",
                                   "YE\xc5\xbf",
                                   "- 3",
                                   "true false"}) {
        table.push_back({text, same(text)});
    }
    for (const auto& row : table) {
        CAPTURE(row.text);
        CHECK((WrapperGenerator::coercePlistValue(row.text) == row.value));
        auto options = plainOptions();
        options.config.infoPlistOverrides = {{"Key", row.text}};
        CHECK((plistOf(options).at("Key") == row.value));
    }
}

TEST_CASE(
    "browser and document registration are both present, the URL type named by the identifier") {
    auto options = plainOptions();
    options.config.registerAsBrowser = true;
    options.config.openWithPassthrough = true;

    const auto plist = plistOf(options);

    auto expected = fixedEntries();
    expected["CFBundleURLTypes"] = {PropertyListArray{
        {PropertyListDictionary{{"CFBundleURLName", {std::string("app.example.mail")}},
                                {"CFBundleURLSchemes", {texts({"http", "https"})}}}}}};
    expected["CFBundleDocumentTypes"] = {PropertyListArray{
        {PropertyListDictionary{{"CFBundleTypeName", {std::string("All Files")}},
                                {"LSItemContentTypes", {texts({"public.data", "public.content"})}},
                                {"CFBundleTypeRole", {std::string("Viewer")}},
                                {"LSHandlerRank", {std::string("Alternate")}}}}}};
    CHECK((plist == expected));
    options.config.openWithPassthrough = false;
    CHECK(plistOf(options).count("CFBundleDocumentTypes") == 0);
    CHECK(plistOf(options).count("CFBundleURLTypes") == 1);
}

TEST_CASE("an icon's name is written as it is given") {
    CHECK(*plistOf(plainOptions(), "AppIcon").at("CFBundleIconFile").string() == "AppIcon");
}

TEST_CASE("overrides have the last word over every key that was written before") {
    auto options = plainOptions();
    options.config.registerAsBrowser = true;
    options.config.infoPlistOverrides = {{"CFBundleExecutable", "other"},
                                         {"CFBundleIconFile", "Mine"},
                                         {"CFBundleURLTypes", "none"},
                                         {"NSHighResolutionCapable", "false"},
                                         {"CFBundleVersion", "2"}};

    const auto plist = plistOf(options, "AppIcon");

    CHECK(*plist.at("CFBundleExecutable").string() == "other");
    CHECK(*plist.at("CFBundleIconFile").string() == "Mine");
    CHECK(*plist.at("CFBundleURLTypes").string() == "none");
    CHECK((plist.at("NSHighResolutionCapable") == PropertyListValue{false}));
    CHECK((plist.at("CFBundleVersion") == PropertyListValue{std::int64_t{2}}));
}

TEST_CASE("hostile names and override keys are written as text and read back the same") {
    auto options = plainOptions();
    const std::string hostile = "]]><!--&amp;\"'\n\xf0\x9f\x98\x80</string>";
    options.config.displayName = options.config.bundleId = hostile;
    options.config.infoPlistOverrides = {{"<key>" + hostile, hostile}, {"", "empty key"}};

    const auto plist = plistOf(options);

    CHECK(*plist.at("CFBundleName").string() == hostile);
    CHECK(*plist.at("CFBundleIdentifier").string() == hostile);
    CHECK(*plist.at("<key>" + hostile).string() == hostile);
    CHECK(*plist.at("").string() == "empty key");
}

TEST_CASE("an Info plist that cannot be serialised fails with the error and no file") {
    for (const std::string bad : {"\x01", "\xff", "a\x1b[0m", "\xef\xbf\xbe"}) {
        const TempDir tmp;
        CAPTURE(bad.size());
        auto options = plainOptions();
        options.config.displayName = bad;
        expectThrow<EncodingError>(
            [&] { WrapperGenerator().writeInfoPlist(options, {}, tmp.path()); });
        options = plainOptions();
        options.config.infoPlistOverrides = {{bad, "v"}};
        expectThrow<EncodingError>(
            [&] { WrapperGenerator().writeInfoPlist(options, {}, tmp.path()); });
        CHECK(namesIn(tmp.path()).empty());
    }
}

TEST_CASE("an Info plist that cannot be written fails with the system's error") {
    const TempDir tmp;
    expectThrow<FileError>(
        [&] { WrapperGenerator().writeInfoPlist(plainOptions(), {}, tmp / "missing"); });
}
