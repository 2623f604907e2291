#include "Ambrel/Application/AppProfile.h"

#include "Support/Expect.h"

#include <nlohmann/json.hpp>

using namespace ambrel;
using namespace korvane::test;
using nlohmann::json;

namespace {

AppProfile verifiedProfile() {
    return {"org.example.mail",      "Mail", true,      Strategy::wrapperIdentity,
            SingletonTier::lockFile, true,   {"--one"}, {"14.5"},
            Confidence::verified};
}

json objectOf(const AppProfile& profile) { return json::parse(profile.encodedJSON()); }

DecodingError decodingErrorOf(const std::string& text) {
    return expectThrow<DecodingError>([&] { AppProfile::decode(text); });
}

AppProfile with(Confidence confidence, const Strings& verifiedOn) {
    auto profile = verifiedProfile();
    profile.confidence = confidence;
    profile.verifiedOn = verifiedOn;
    return profile;
}

} // namespace

TEST_CASE("a profile without verifiedOn fails to decode even with every other key") {
    auto object = objectOf(verifiedProfile());
    object.erase("verifiedOn");

    const auto error = decodingErrorOf(object.dump());

    CHECK(error.kind == DecodingError::Kind::keyNotFound);
    CHECK(error.description() == "Key not found: verifiedOn");
}

TEST_CASE(
    "an encoded profile with empty extraArgs has an empty list, bundleId first, verifiedOn last") {
    auto profile = verifiedProfile();
    profile.extraArgs.clear();

    const auto text = profile.encodedJSON();

    CHECK(contains(text, "\"extraArgs\": []"));
    std::size_t position = 0;
    for (const auto* key : {"bundleId", "confidence", "displayName", "extraArgs", "prefsLeak",
                            "sandboxed", "singleton", "strategy", "verifiedOn"}) {
        const auto found = text.find("\n  \"" + std::string(key) + "\": ");
        CAPTURE(key);
        REQUIRE(found != std::string::npos);
        CHECK(found >= position);
        position = found;
    }
}

TEST_CASE("a verified profile that was verified nowhere reconciles to autoDetected") {
    for (const auto* signature : {"", "14.5"}) {
        CAPTURE(signature);
        CHECK(with(Confidence::verified, {}).reconciled(signature).confidence ==
              Confidence::autoDetected);
    }
}

TEST_CASE("a community profile keeps its level on a listed signature and loses it on another") {
    const auto profile = with(Confidence::community, {"14.4", "14.5"});

    CHECK(profile.reconciled("14.5").encodedJSON() == profile.encodedJSON());
    CHECK(profile.reconciled("14.6").confidence == Confidence::autoDetected);
    CHECK(profile.reconciled("14.5 ").confidence == Confidence::autoDetected);
    CHECK(with(Confidence::verified, {"Mac A"}).reconciled("mac a").confidence ==
          Confidence::autoDetected);
    CHECK(with(Confidence::verified, {""}).reconciled("").confidence == Confidence::verified);
}

TEST_CASE("a broken profile stays broken whatever the signature") {
    for (const auto* signature : {"", "14.5", "14.6"}) {
        CHECK(with(Confidence::broken, {"14.5"}).reconciled(signature).confidence ==
              Confidence::broken);
        CHECK(with(Confidence::autoDetected, {"14.5"}).reconciled(signature).confidence ==
              Confidence::autoDetected);
    }
}

TEST_CASE("reconciling twice gives the same as reconciling once and changes nothing else") {
    for (const auto confidence : {Confidence::verified, Confidence::community,
                                  Confidence::autoDetected, Confidence::broken}) {
        const auto profile = with(confidence, {"14.5"});
        const auto before = profile.encodedJSON();
        const auto once = profile.reconciled("15");
        CHECK(once.reconciled("15").encodedJSON() == once.encodedJSON());
        CHECK(profile.encodedJSON() == before);
        auto expected = profile;
        expected.confidence = once.confidence;
        CHECK(once.encodedJSON() == expected.encodedJSON());
    }
}

TEST_CASE("a profile is written with all nine keys and read back the same") {
    const AppProfile plain{"b/c", "", false, Strategy::homeOverride, SingletonTier::none,
                           false, {}, {},    Confidence::broken};
    CHECK(objectOf(plain) == json{{"bundleId", "b/c"},
                                  {"displayName", ""},
                                  {"sandboxed", false},
                                  {"strategy", "home-override"},
                                  {"singleton", "none"},
                                  {"prefsLeak", false},
                                  {"extraArgs", json::array()},
                                  {"verifiedOn", json::array()},
                                  {"confidence", "broken"}});
    CHECK(contains(plain.encodedJSON(), "\"b\\/c\""));
    const auto text = verifiedProfile().encodedJSON();
    CHECK(AppProfile::decode(text).encodedJSON() == text);
}

TEST_CASE("every key of a profile is required, may not be null and has its type") {
    const auto object = objectOf(verifiedProfile());
    for (const auto& item : object.items()) {
        const auto& key = item.key();
        const auto& value = item.value();
        CAPTURE(key);
        auto without = object;
        without.erase(key);
        CHECK(decodingErrorOf(without.dump()).description() == "Key not found: " + key);
        for (const json& wrong :
             {json(nullptr), json(1), json(0), json::object(),
              value.is_string() ? json(true) : json("true"), json::array({1})}) {
            auto changed = object;
            changed[key] = wrong;
            CAPTURE(wrong.dump());
            CHECK(contains(decodingErrorOf(changed.dump()).description(), key));
        }
    }
    auto more = object;
    more["unknown"] = {1, 2};
    CHECK(AppProfile::decode(more.dump()).bundleId == "org.example.mail");
}

TEST_CASE("a profile is decoded in the order of its keys") {
    CHECK(
        contains(decodingErrorOf(R"({"confidence":1,"verifiedOn":1,"bundleId":"b"})").description(),
                 "displayName"));
    auto object = objectOf(verifiedProfile());
    object["strategy"] = "?";
    object["sandboxed"] = 1;
    CHECK(contains(decodingErrorOf(object.dump()).description(), "sandboxed"));
}

TEST_CASE("an unknown raw value or an element of the wrong type fails with its path") {
    auto object = objectOf(verifiedProfile());
    object["verifiedOn"] = {"14.5", nullptr};
    CHECK(contains(decodingErrorOf(object.dump()).description(), "verifiedOn[1]"));
    object["verifiedOn"] = json::array();
    object["confidence"] = "Verified";
    const auto error = decodingErrorOf(object.dump());
    CHECK(error.kind == DecodingError::Kind::unknownRawValue);
    CHECK(isOneLine(error.description()));
}

TEST_CASE("a profile with text that is not UTF-8 cannot be encoded") {
    auto profile = verifiedProfile();
    profile.displayName = "\xff";
    expectThrow<EncodingError>([&] { (void)profile.encodedJSON(); });
    profile = verifiedProfile();
    profile.verifiedOn = {"\xff"};
    expectThrow<EncodingError>([&] { (void)profile.encodedJSON(); });
}

TEST_CASE("a hostile profile file fails in one line") {
    for (const std::string& text :
         {std::string(), std::string("null"), std::string("[]"), std::string(100000, '['),
          std::string("\xff"), objectOf(verifiedProfile()).dump() + std::string("\0", 1)}) {
        CHECK(isOneLine(decodingErrorOf(text).description()));
    }
}
