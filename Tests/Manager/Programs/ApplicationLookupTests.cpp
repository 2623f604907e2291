#include "Manager/Programs/ApplicationLookup.h"

#include "Manager/Base/Refusal.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"

namespace korvane::test {

using Kind = Refusal::Kind;

namespace {

struct Applications {
    TempDir tmp;
    UserHome home{tmp};
    ambrel::UserPlaces user = home.places();
    ambrel::Environment environment{{"PATH", tmp / "bin"},
                                    {"XDG_DATA_DIRS", makeFolder(tmp / "share")}};

    Path install(const std::string& name, const std::string& identifier) const {
        return AppBundleBuilder(home / ("Applications/" + name + ".app"))
            .identifier(identifier)
            .write();
    }
    Path find(const std::string& text) const {
        return requireApplication(text, user, environment).url;
    }
    Refusal refusal(const std::string& text) const {
        return expectThrow<Refusal>([&] { find(text); });
    }
};

} // namespace

TEST_CASE("an application is looked up by name, identifier and path") {
    const Applications applications;
    const auto app = applications.install("Mail", "org.example.mail");

    for (const std::string text : {"Mail", "org.example.mail", "~/Applications/Mail.app/"}) {
        CAPTURE(text);
        CHECK(applications.find(text) == app);
    }
}

TEST_CASE("an unknown application is refused with what can be done about it") {
    const Applications applications;
    applications.install("Mail Reader", "org.example.mail");
    writeScript(applications.tmp / "bin/some-program", "exit 0");

    const auto meant = applications.refusal("reader");
    const auto program = applications.refusal("some-program");
    const auto nothing = applications.refusal("zzzzzzzzzzzz");

    CHECK(meant.remedy == Remedy::nameSuggested);
    CHECK(meant.alternatives == Strings{"Mail Reader"});
    CHECK(program.remedy == Remedy::adoptFirst);
    CHECK(program.subject == "some-program");
    CHECK(nothing.remedy == Remedy::listApplications);
    for (const auto& refusal : {meant, program, nothing}) {
        CHECK(refusal.kind == Kind::unknownApplication);
    }
}

TEST_CASE("several applications of one name, and a path to none, are refused") {
    const Applications applications;
    const auto one = applications.install("Mail", "org.example.mail");
    const auto two = applications.install("Other", "Mail");

    const auto several = applications.refusal("Mail");
    const auto none = applications.refusal("/nope.app");

    CHECK(several.kind == Kind::severalApplications);
    CHECK(several.remedy == Remedy::nameByPath);
    CHECK(several.alternatives == Strings{one, two});
    CHECK(none.kind == Kind::unreadableApplication);
    CHECK(none.subject == "/nope.app");
}

} // namespace korvane::test
