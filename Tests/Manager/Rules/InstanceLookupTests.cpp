#include "Manager/Rules/InstanceLookup.h"

#include "Manager/Base/Refusal.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"

namespace korvane::test {

using Kind = Refusal::Kind;

namespace {

struct Instances {
    TempDir tmp;
    UserHome home{tmp};
    ambrel::UserPlaces user = home.places();

    Path write(const std::string& folder, const std::string& name) const {
        auto config = smallestConfig();
        config.displayName = name;
        return writeWrapper(home / ("Applications/" + folder), config);
    }
    Refusal refusal(const std::string& name) const {
        return expectThrow<Refusal>([&] { requireInstance(name, user); });
    }
};

} // namespace

TEST_CASE("an instance is found by its name and by its path") {
    const Instances instances;
    const auto bundle = instances.write("Work.app", "Work");

    CHECK(requireInstance("Work", instances.user).bundleURL == bundle);
    CHECK(requireInstance("~/Applications/Work.app/", instances.user).bundleURL == bundle);
    CHECK(nameFor(requireInstance(bundle, instances.user), instances.user) == "Work");
}

TEST_CASE("an instance that is not there is refused with the name that may be meant") {
    const Instances instances;
    instances.write("Work.app", "Work");

    const auto similar = instances.refusal("Wrok");
    const auto different = instances.refusal("Holidays");
    const auto path = instances.refusal("/nowhere/Work.app");

    for (const auto& refusal : {similar, different, path}) {
        CHECK(refusal.kind == Kind::unknownInstance);
        CHECK(refusal.remedy == Remedy::listInstances);
    }
    CHECK(similar.alternatives == Strings{"Work"});
    CHECK(different.alternatives.empty());
    CHECK(path.subject == "/nowhere/Work.app");
}

TEST_CASE("several instances of one name are refused with their paths") {
    const Instances instances;
    const auto one = instances.write("One.app", "Work");
    const auto two = instances.write("Two.app", "Work");

    const auto refusal = instances.refusal("Work");

    CHECK(refusal.kind == Kind::severalInstances);
    CHECK(refusal.subject == "Work");
    CHECK(refusal.remedy == Remedy::nameByPath);
    CHECK(std::set<std::string>(refusal.alternatives.begin(), refusal.alternatives.end()) ==
          std::set<std::string>{one, two});
}

TEST_CASE("an instance whose configuration cannot be read is damaged") {
    const Instances instances;
    const auto bundle = writeWrapper(instances.home / "Applications/Work.app", "{");

    const auto refusal = instances.refusal(bundle);

    CHECK(refusal.kind == Kind::damagedInstance);
    CHECK(refusal.subject == bundle);
}

} // namespace korvane::test
