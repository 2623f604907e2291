#include "Manager.h"

#include "Ambrel/Platform/FileSystem.h"

#include <algorithm>

namespace korvane::test {

Manager::Manager()
    : home(tmp), dataHome_("XDG_DATA_HOME", makeFolder(tmp / "data")),
      dataDirs_("XDG_DATA_DIRS", makeFolder(tmp / "share")), noColor_("NO_COLOR", std::nullopt) {}

Strings Manager::command(const Strings& words) const {
    Strings whole{"/bin/sh", "-c", "exec \"$@\" </dev/null", "sh", KORVANE_TEST_MANAGER};
    whole.insert(whole.end(), words.begin(), words.end());
    return whole;
}

ProgramSetup Manager::setup(const Strings& words) const {
    return {.command = command(words), .currentDirectory = tmp.path()};
}

ProgramSetup Manager::setupAsOrdinaryUser(const Strings& words) const {
    // A copy, for the folder that it was built in may be closed to that user.
    const auto program = tmp / "korvane";
    ambrel::fileSystem::copyFile(KORVANE_TEST_MANAGER, program);
    ambrel::fileSystem::setPermissions(program, 0755);
    giveToOrdinaryUser(tmp.path());
    auto result = setup(words);
    std::replace(result.command.begin(), result.command.end(), std::string(KORVANE_TEST_MANAGER),
                 program);
    result.command = commandAsOrdinaryUser(std::move(result.command));
    return result;
}

ProgramResult Manager::run(const Strings& words,
                           const std::map<std::string, std::string>& more) const {
    auto program = setup(words);
    program.environment = more;
    return test::run(program);
}

ProgramResult Manager::runOnTerminal(const Strings& words, const std::string& input) const {
    std::string line = "TERM=xterm " + test::quoted(KORVANE_TEST_MANAGER);
    for (const auto& word : words) line += " " + test::quoted(word);
    // script(1) gives the command a terminal and hands on its status.
    return test::run({"/bin/sh", "-c",
                      "printf %s " + test::quoted(input) + " | script -qec " + test::quoted(line) +
                          " /dev/null"});
}

std::string Manager::result(const Strings& words) const {
    const auto done = run(words);
    INFO(done.error);
    REQUIRE(done.status == 0);
    return done.output;
}

Path Manager::create(Strings words) const {
    words.insert(words.begin(), "create");
    words.insert(words.begin() + 2, {"--runner", KORVANE_TEST_RUNNER});
    const auto output = result(words);
    REQUIRE(output.ends_with('\n'));
    return output.substr(0, output.size() - 1);
}

std::string Manager::refusal(const Strings& words, int status) const {
    const auto done = run(words);
    INFO(done.error);
    CHECK(done.status == status);
    CHECK(done.output.empty());
    CHECK(done.error.starts_with("korvane: "));
    CHECK(done.error.ends_with('\n'));
    return done.error;
}

Path Manager::installApp(const std::string& name, const std::string& identifier) const {
    return AppBundleBuilder(applications() + "/" + name + ".app")
        .identifier(identifier)
        .executable("program", "printf '%s\\n' \"$@\"")
        .write();
}

ambrel::InstanceConfig Manager::configOf(const Path& bundle) const {
    return ambrel::InstanceConfig::decode(readFile(bundle + "/Contents/Resources/instance.json"));
}

bool says(const std::string& text, const std::string& part) {
    return text.ends_with('\n') && contains(text, part);
}

} // namespace korvane::test
