#include "Ambrel/Instance/Strategy.h"

#include "Ambrel/Application/AppProfile.h"
#include "Ambrel/Instance/InstanceConfig.h"
#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Support/Builders.h"
#include "Support/Expect.h"

using namespace ambrel;
using namespace korvane::test;

namespace {

template <class Enum> Strings rawValuesOf() {
    Strings values;
    for (const auto& entry : RawValues<Enum>::table) values.emplace_back(entry.second);
    return values;
}

template <class Enum> void checkTable(const Strings& expected) {
    CHECK(rawValuesOf<Enum>() == expected);
    for (std::size_t index = 0; index < expected.size(); ++index) {
        const auto value = static_cast<Enum>(index); // declaration order
        CHECK(rawValue(value) == expected[index]);
        CHECK(fromRawValue<Enum>(expected[index]) == value);
    }
}

InstanceConfig withStrategy(const std::string& raw) {
    return InstanceConfig::decode(R"({"displayName":"a","bundleId":"b","instanceHome":"c",)"
                                  R"("strategy":")" +
                                  raw + "\"}");
}

AppProfile profileWith(const std::string& singleton, const std::string& confidence) {
    return AppProfile::decode(
        R"({"bundleId":"b","displayName":"d","sandboxed":false,"strategy":"home-override",)"
        R"("singleton":")" +
        singleton + R"(","prefsLeak":false,"extraArgs":[],"verifiedOn":[],"confidence":")" +
        confidence + "\"}");
}

} // namespace

TEST_CASE("home-override decodes to homeOverride and the case name is no raw value") {
    CHECK(withStrategy("home-override").strategy == Strategy::homeOverride);
    CHECK_FALSE(fromRawValue<Strategy>("homeOverride").has_value());

    const auto error = expectThrow<DecodingError>([] { withStrategy("homeOverride"); });

    CHECK(error.kind == DecodingError::Kind::unknownRawValue);
}

TEST_CASE("lsProhibited and autoDetected decode and their hyphenated forms fail") {
    const auto profile = profileWith("lsProhibited", "autoDetected");
    CHECK(profile.singleton == SingletonTier::lsProhibited);
    CHECK(profile.confidence == Confidence::autoDetected);

    const auto singleton =
        expectThrow<DecodingError>([] { profileWith("ls-prohibited", "autoDetected"); });
    const auto confidence =
        expectThrow<DecodingError>([] { profileWith("lsProhibited", "auto-detected"); });

    CHECK(singleton.kind == DecodingError::Kind::unknownRawValue);
    CHECK(contains(singleton.description(), "singleton"));
    CHECK(confidence.kind == DecodingError::Kind::unknownRawValue);
    CHECK(contains(confidence.description(), "confidence"));
}

TEST_CASE("encoding SingletonTier machPort writes machPort") {
    auto profile = profileWith("none", "broken");
    profile.singleton = SingletonTier::machPort;
    CHECK(contains(profile.encodedJSON(), "\"singleton\": \"machPort\""));
}

TEST_CASE("the raw values stand in declaration order and are kept in both styles") {
    checkTable<Strategy>(
        {"home-override", "container-redirect", "wrapper-identity", "unsupported"});
    checkTable<SingletonTier>({"none", "lockFile", "machPort", "lsProhibited", "unknown"});
    checkTable<Confidence>({"verified", "community", "autoDetected", "broken"});
    checkTable<ShortcutKind>({"app", "web", "file", "command"});
    checkTable<IconLabel::Position>({"bottom", "center", "top"});
    checkTable<WrapperFactory::AppEngine>({"electron", "chromium", "firefox", "eclipse", "other"});
}

TEST_CASE("a raw value is matched exactly, without trimming or change of case") {
    for (const auto* raw : {"Home-Override", " home-override", "home-override ", "home-overrid",
                            "home-override\n", ""}) {
        CAPTURE(raw);
        CHECK_FALSE(fromRawValue<Strategy>(raw).has_value());
    }
    CHECK_FALSE(fromRawValue<ShortcutKind>(std::string_view("app\0", 4)).has_value());
}
