#include "Ambrel/Instance/ConfigFields.h"

#include "Support/Builders.h"
#include "Support/Expect.h"

#include <nlohmann/json.hpp>
#include <set>

using namespace ambrel;
using namespace korvane::test;

TEST_CASE("the table of fields has a line for each key of a full file") {
    std::set<std::string> keys;
    forEachField([&](const auto& field) {
        CAPTURE(field.key);
        CHECK(keys.insert(field.key).second);
    });

    const auto file = nlohmann::json::parse(fullConfig().encode());
    std::set<std::string> written;
    for (const auto& [key, value] : file.items()) written.insert(key);
    CHECK(keys == written);
    CHECK(keys.size() == 20);
}

TEST_CASE("no member of a configuration is missing from the table, as far as its size tells") {
    std::size_t end = 0;
    forEachField([&]<class T>(const ConfigField<T>&) {
        end = (end + alignof(T) - 1) / alignof(T) * alignof(T) + sizeof(T);
    });

    constexpr auto alignment = alignof(InstanceConfig);
    CHECK((end + alignment - 1) / alignment * alignment == sizeof(InstanceConfig));
}

TEST_CASE("the members of the table stand in the order of the record, each once") {
    const InstanceConfig config;
    const void* before = nullptr;
    forEachField([&](const auto& field) {
        CAPTURE(field.key);
        const void* member = &(config.*field.member);
        CHECK(std::less<>()(before, member));
        before = member;
    });
}

TEST_CASE("exactly one field tells what an instance of a kind opens, and only for that kind") {
    for (const auto& entry : RawValues<ShortcutKind>::table) {
        const auto current = entry.first;
        CAPTURE(entry.second);
        int subjects = 0;
        forEachField([&](const auto& field) {
            if (field.part == ConfigPart::subject && field.kinds.contains(current)) ++subjects;
        });
        CHECK(subjects == 1);
    }
}

TEST_CASE("each field has a line for documents") {
    forEachField([](const auto& field) {
        CAPTURE(field.key);
        const std::string description = field.description;
        CHECK_FALSE(description.empty());
        CHECK_FALSE(description.ends_with('.'));
        CHECK(isOneLine(description));
    });
}

TEST_CASE("a set of kinds holds those that it is made of and no others") {
    const KindSet set{ShortcutKind::app, ShortcutKind::command};

    CHECK(set.contains(ShortcutKind::app));
    CHECK_FALSE(set.contains(ShortcutKind::web));
    CHECK_FALSE(set.contains(ShortcutKind::file));
    CHECK(set.contains(ShortcutKind::command));
}
