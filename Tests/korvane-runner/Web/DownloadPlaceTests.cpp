#include "korvane-runner/Web/DownloadPlace.h"

#include "Ambrel/Base/Utf8.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Files.h"

#include <filesystem>

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

struct Stage {
    Stage() : user(tmp) { makeFolder(home); }

    DownloadPlace place(bool isShared = true) const {
        InstanceConfig config;
        config.kind = ShortcutKind::web;
        config.instanceHome = home;
        config.shareUserFolders = isShared;
        return {ResolvedInstance::of(config, user.places()), user.places()};
    }
    void setDownloads(const std::string& setting) const {
        writeFile(user / ".config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"" + setting + "\"\n");
    }

    TempDir tmp;
    UserHome user;
    Path home = tmp / "instance";
};

} // namespace

TEST_CASE("a download lies in the user's own Downloads, which is made when it is missing") {
    const Stage stage;
    auto place = stage.place();

    CHECK(place.choose("report.pdf") == stage.user / "Downloads/report.pdf");
    CHECK(isRealFolder(stage.user / "Downloads"));
    CHECK_FALSE(isThere(stage.user / "Downloads/report.pdf"));
    CHECK(namesIn(stage.home).empty());
}

TEST_CASE("a download lies where the user has set Downloads to be") {
    const Stage stage;
    makeFolder(stage.user / "Incoming");
    stage.setDownloads("$HOME/Incoming");
    CHECK(stage.place().choose("a") == stage.user / "Incoming/a");
}

TEST_CASE("the instance's own Downloads serve where the user's are not shared or not usable") {
    const auto own = [](const Stage& stage) { return stage.home + "/Downloads/a"; };
    {
        const Stage stage;
        CHECK(stage.place(false).choose("a") == own(stage));
        CHECK(namesIn(stage.user.path()).empty());
    }
    {
        const Stage stage;
        stage.setDownloads("$HOME"); // as it is written for "no such folder"
        CHECK(stage.place().choose("a") == own(stage));
    }
    {
        const Stage stage;
        stage.setDownloads("/nonexistent/disk/Downloads");
        CHECK(stage.place().choose("a") == own(stage));
        CHECK_FALSE(isThere("/nonexistent"));
    }
    {
        const Stage stage;
        makeLink(stage.user / "Downloads", "/nonexistent");
        CHECK(stage.place().choose("a") == own(stage));
    }
}

TEST_CASE("without any folder there is no place for a download") {
    const Stage stage;
    std::filesystem::remove(stage.home);
    CHECK(stage.place(false).choose("a").empty());
}

TEST_CASE("a download takes nobody's name, and no two get the same") {
    const Stage stage;
    const auto folder = stage.user / "Downloads";
    writeFile(folder + "/a.tar.gz");
    writeFile(folder + "/b 2.txt");
    makeLink(folder + "/c", "/nonexistent");
    auto place = stage.place();

    CHECK(place.choose("a.tar.gz") == folder + "/a 2.tar.gz");
    CHECK(place.choose("b.txt") == folder + "/b.txt");
    CHECK(place.choose("b.txt") == folder + "/b 3.txt"); // the first is still on its way
    CHECK(place.choose("c") == folder + "/c 2");
    place.ended(folder + "/b.txt");
    CHECK(place.choose("b.txt") == folder + "/b.txt");
}

TEST_CASE("a suggested name becomes a name of one visible file") {
    std::string turned = "photo";
    utf8::append(turned, 0x202E); // what follows reads from right to left
    turned += "gpj.sh";
    const std::string euros =
        "€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€€";
    for (const auto& row : std::vector<std::pair<std::string, std::string>>{
             {"report.pdf", "report.pdf"},
             {"Żółw 1.txt", "Żółw 1.txt"},
             {"../../.bashrc", "bashrc"},
             {"/etc/passwd", "passwd"},
             {"a/", "download"},
             {"", "download"},
             {".", "download"},
             {"..", "download"},
             {" . . ", "download"},
             {"  a b. ", "a b"},
             {std::string("a\0b\nc.txt", 9), "a b c.txt"},
             {"\xff.txt", "\uFFFD.txt"},
             {turned, "photogpj.sh"},
             {"-rf", "-rf"},
             {"x" + euros + ".pdf", "x" + euros.substr(0, 195) + ".pdf"},
             {"a." + std::string(300, 'x'), "a." + std::string(198, 'x')},
         }) {
        const auto& suggested = row.first;
        const auto& name = row.second;
        CAPTURE(suggested);
        CHECK(DownloadPlace::safeName(suggested) == name);
    }
}
