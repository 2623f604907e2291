#include "korvane/Output/Remedies.h"

#include "Support/Expect.h"

#include <sstream>

namespace korvane::test {

using Kind = Refusal::Kind;

TEST_CASE("a refusal is told with its remedy in words of the command line") {
    const auto text = [](Kind kind, Remedy remedy, const std::string& subject = "",
                         const Strings& alternatives = {}) {
        return wholeText(Refusal(kind, subject, "No.", remedy, alternatives));
    };

    CHECK(text(Kind::badName, Remedy::none) == "No.");
    CHECK(text(Kind::notAnInstance, Remedy::chooseName) ==
          "No. Choose another name, or another folder with --output.");
    CHECK(text(Kind::placeTaken, Remedy::chooseFolder) ==
          "No. Remove it first, or choose another folder with: korvane adopt … --into DIR");
    CHECK(text(Kind::homeTaken, Remedy::chooseHome) == "No. Choose another one with --home.");
    CHECK(text(Kind::homeTaken, Remedy::changeHome) == "No. Choose another one.");
    CHECK(text(Kind::identifierTaken, Remedy::chooseIdentifier) ==
          "No. Choose another one with --bundle-id.");
    CHECK(text(Kind::entryTaken, Remedy::chooseIdentifier) ==
          "No. Choose another identifier with --bundle-id.");
    CHECK(text(Kind::entryTaken, Remedy::createAgainWithIdentifier) ==
          "No. An instance gets another identifier with: korvane create … --replace --bundle-id "
          "ID");
    CHECK(text(Kind::unusableRunner, Remedy::chooseRunner) == "No. Name its file with --runner.");
    CHECK(text(Kind::instanceExists, Remedy::replace) == "No. Replace it with --replace.");
    CHECK(text(Kind::unusableProfile, Remedy::goWithoutProfile) ==
          "No. Mend it, or go without it with --no-profile.");
    CHECK(text(Kind::damagedInstance, Remedy::createAgain) ==
          "No. Make it anew with: korvane create … --replace");
    CHECK(text(Kind::changedMeanwhile, Remedy::lookAgain) == "No. Try again.");
    CHECK(text(Kind::foldersNotShared, Remedy::shareFolders, "my work") ==
          "No. Let it share yours with: korvane edit 'my work' --set shareUserFolders=true");
    CHECK(text(Kind::badAddress, Remedy::changeAddress, "my mail") ==
          "No. Give it another one with: korvane edit 'my mail' --set url=URL");
    CHECK(text(Kind::unknownApplication, Remedy::adoptFirst, "-x") ==
          "No. An installed program becomes an application with: korvane adopt -- -x");
    CHECK(text(Kind::unknownApplication, Remedy::listApplications) == "No. See: korvane apps");
    CHECK(text(Kind::unknownApplication, Remedy::nameSuggested, "", {"Mail"}) ==
          "No. Did you mean \"Mail\"?");
    CHECK(text(Kind::unknownInstance, Remedy::listInstances) == "No. See: korvane list");
    CHECK(text(Kind::unknownInstance, Remedy::listInstances, "", {"Work"}) ==
          "No. Did you mean \"Work\"? See: korvane list");
    CHECK(text(Kind::severalInstances, Remedy::nameByPath, "", {"/a", "/b\nc"}) ==
          "No. Name one of them by its path:\n  /a\n  /b\\nc");
    CHECK(text(Kind::instanceRuns, Remedy::stopFirst, "my work") ==
          "No. Stop it first with: korvane stop 'my work'");
    CHECK(text(Kind::applicationNeeded, Remedy::deleteFirst, "", {"Work", "Home"}) ==
          "No. Delete first:\n  Work\n  Home");
}

TEST_CASE("a notice is told with its remedy, and a field by its option") {
    const auto text = [](Notice::Kind kind, Remedy remedy, const std::string& subject,
                         const std::string& sentence) {
        return wholeText(
            Notice{.kind = kind, .subject = subject, .sentence = sentence, .remedy = remedy});
    };
    CHECK(text(Notice::Kind::homeIsLong, Remedy::chooseHome, "/h", "Long.") ==
          "Long. Choose a shorter one with --home.");
    CHECK(text(Notice::Kind::homeExisted, Remedy::chooseHome, "/h", "There.") ==
          "There. Choose one of its own with --home.");
    CHECK(text(Notice::Kind::labelWithoutIcon, Remedy::chooseIcon, "", "There is no icon.") ==
          "There is no icon: give one with --icon.");
    CHECK(text(Notice::Kind::notRegistered, Remedy::registerAgain, "Work", "Not shown.") ==
          "Not shown. Try again with: korvane register Work");
}

TEST_CASE("a warning is marked as one, and information is not") {
    std::istringstream input;
    std::ostringstream results;
    std::ostringstream messages;
    const Surroundings surroundings{
        .input = input, .results = results, .messages = messages, .environment = {}, .user = {}};
    Notice notice{.kind = Notice::Kind::profileUsed, .subject = "", .sentence = "So."};

    tell(surroundings, notice);
    notice.severity = Notice::Severity::information;
    tell(surroundings, std::vector{notice});

    CHECK(messages.str() == "warning: So.\nSo.\n");
    CHECK(results.str().empty());
}

} // namespace korvane::test
