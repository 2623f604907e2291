#include "Registrations.h"

#include "Ambrel/Platform/Images.h"
#include "ForeignEntryReader.h"

namespace korvane::test {

Path Registrations::icon(const std::string& id, std::uint32_t side) const {
    const auto pixels = std::to_string(side);
    return data("/icons/hicolor/" + pixels + "x" + pixels + "/apps/" + id + ".png");
}

Path Registrations::picture(const Pixel& color) const {
    return writeFile(manager.tmp / "picture.png",
                     ambrel::images::encodePng(filledPicture(64, 64, color)));
}

Path Registrations::createCommand(const std::string& name, Strings more) const {
    Strings words{"command", name};
    words.insert(words.end(), more.begin(), more.end());
    words.insert(words.end(), {"/bin/echo", "hello"});
    return manager.create(words);
}

ProgramResult Registrations::tryToCreate(const std::string& name, const Strings& more) const {
    Strings words{"create", "command", name, "--runner", KORVANE_TEST_RUNNER};
    words.insert(words.end(), more.begin(), more.end());
    words.push_back(aProgram);
    return manager.run(words);
}

std::multiset<std::string> Registrations::registered() const {
    return isThere(data()) ? snapshot(data()) : std::multiset<std::string>{};
}

void Registrations::checkRefused(const ProgramResult& done,
                                 const std::multiset<std::string>& before,
                                 const std::string& reason) const {
    INFO(done.error);
    CHECK(done.status == 1);
    CHECK(done.output.empty());
    CHECK(says(done.error, reason));
    CHECK(snapshot(manager.tmp.path()) == before);
}

DesktopEntry readEntryFile(const Path& file) { return DesktopEntry::parse(readFile(file)); }

Path runnerIn(const Path& bundle) { return bundle + "/Contents/MacOS/runner"; }

void checkEntry(const Path& file, const std::string& name, const Path& program,
                const Path& bundle) {
    CAPTURE(file);
    CHECK(complaintsAbout(file).empty());
    const auto own = readEntryFile(file);
    CHECK(own.string("Name") == name);
    CHECK(own.program(file).program == program);
    CHECK_FALSE(own.program(file).hasArguments());
    CHECK(own.string("X-Korvane-Bundle") == bundle);
    const auto foreign = readWithGLib(file);
    CHECK(foreign.name == name);
    CHECK(foreign.command == Strings{program});
    CHECK(foreign.bundle == bundle);
}

} // namespace korvane::test
