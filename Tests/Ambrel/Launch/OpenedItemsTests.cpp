#include "Ambrel/Launch/OpenedItems.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"

using namespace ambrel;
using namespace korvane::test;

namespace {

struct Row {
    std::string word;
    std::string item;
};

void checkOpened(const std::vector<Row>& rows) {
    for (const auto& row : rows) {
        CAPTURE(row.word);
        CHECK(openedItems({row.word}) == Strings{row.item});
    }
}

} // namespace

TEST_CASE("what is to be opened is a whole path or an address, and never an option") {
    const auto here = fileSystem::currentDirectory();
    checkOpened({
        {"/a/b c", "/a/b c"},
        {"-x", here + "/-x"},
        {"--open", here + "/--open"},
        {"two words", here + "/two words"},
        {"new\nline", here + "/new\nline"},
        {"%41", here + "/%41"},
        {"~/x", here + "/~/x"},
        {"../x", here + "/../x"},
        {"\xff\xfe", here + "/\xff\xfe"},
        {"1:2", here + "/1:2"},
        {"a/b:c", here + "/a/b:c"},
        {":", here + "/:"},
        {"-a:b", here + "/-a:b"},
        {"/%41", "/%41"},
        {"https://example.org/a b?c#d", "https://example.org/a b?c#d"},
        {"mailto:a@example.org", "mailto:a@example.org"},
        {"x-b.c+1:", "x-b.c+1:"},
        {"about:blank", "about:blank"},
    });
    CHECK(openedItems({"", "/a", "", "/b"}) == Strings{"/a", "/b"});
}

TEST_CASE("the address of a file here is its path") {
    checkOpened({
        {"file:///a%20b", "/a b"},
        {"file:/a%2520b", "/a%20b"},
        {"FILE://LocalHost/%c3%A9", "/\u00e9"},
        {"file:///%ff%0A-x", "/\xff\n-x"},
        {"file:///", "/"},
        // On another machine, or no path, or more than one.
        {"file://otherhost/x", "file://otherhost/x"},
        {"file://localhost", "file://localhost"},
        {"file:x", "file:x"},
        {"file:", "file:"},
        {"file:///a.html#part", "file:///a.html#part"},
        {"file:///a?b", "file:///a?b"},
        // Not well formed, or no name that a file can have.
        {"file:///a%", "file:///a%"},
        {"file:///a%4", "file:///a%4"},
        {"file:///a%zz", "file:///a%zz"},
        {"file:///a%00b", "file:///a%00b"},
        {"file:///a%2Fb", "file:///a%2Fb"},
    });
}

TEST_CASE("a file that exists is one, also where its name could be an address") {
    const TempDir tmp;
    const auto name = "korvane-test:" + std::string(paths::lastComponent(tmp.path()));
    const auto file = fileSystem::absolute(name);
    CHECK(openedItems({name}) == Strings{name});

    writeFile(file);
    const auto items = openedItems({name});
    fileSystem::removeItem(file);

    CHECK(items == Strings{file});
}

TEST_CASE("only the word that says so makes arguments things to open") {
    const char* const words[] = {"runner", "--open", "/a", "", "http:x", nullptr};
    CHECK(openedItems(5, words) == Strings{"/a", "http:x"});
    CHECK(openedItems(2, words).empty());
    CHECK(openedItems(1, words).empty());
    const char* const others[] = {"runner", "/a", "--open", "/b", nullptr};
    CHECK(openedItems(4, others).empty());
    const char* const longer[] = {"runner", "--opened", "/b", nullptr};
    CHECK(openedItems(3, longer).empty());
    CHECK(openedItems(0, nullptr).empty());
}
