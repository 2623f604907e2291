#include "korvane-runner/Bus/ServiceFile.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace korvane::test;
using namespace std::string_literals;

namespace {

const std::string group = "[D-BUS Service]\n";
const std::string named = group + "Name=org.a.b\n";

ServiceFile example() { return {"org.a.b", {"/bin/a", "x"}}; }

} // namespace

TEST_CASE("service files are read as the bus reads them") {
    const std::string command = "Exec=/bin/a x\n";
    for (const auto& text :
         {named + command, group + "Name = org.a.b\nExec = /bin/a x\n",
          "# c\n\n" + named + "# d\n" + command,
          "[Other]\nName=org.o\n" + named + command + "[Third]\nName=org.t\n",
          named + "Name=org.second\n" + command,
          named + command + group + "Name=org.c\nExec=/bin/c\n",
          group + "Name=org.a.b\r\nExec=/bin/a x\r\n", named + "Exec=/bin/a x",
          named + "Name[de]=org.d\nUser=u\n" + command, named + "Exec=/bin/a\\sx\n",
          named + "Exec=/bin/a\\tx\n", named + "  \n" + command}) {
        CAPTURE(text);
        CHECK((ServiceFile::parse(text) == example()));
    }
}

TEST_CASE("what is no service to the bus is none") {
    const std::string command = "Exec=/bin/a x\n";
    for (const auto& text : {""s,
                             group,
                             named,
                             group + command,
                             group + "Name=bad\n" + command,
                             group + "Name=:1.5\n" + command,
                             group + "Name=org.a.b  \n" + command,
                             named + "no line\n" + command,
                             "Name=org.x\n" + named + command,
                             "[d-bus service]\nName=org.a.b\n" + command,
                             "[D-BUS Service] \nName=org.a.b\n" + command,
                             group + " Name=org.a.b\n" + command,
                             named + "Exec=/bin/a\\x\n",
                             named + "Exec=/bin/a\\",
                             named + "Exec='/bin/a\n",
                             named + "Exec=\n",
                             named + "Exec=/bin/\xE4\n",
                             named + "Exec=/bin/a\0\n"s,
                             named + "[Broken\n" + command,
                             named + " Other=x\n" + command,
                             named + " # c\n" + command,
                             named + "Other key=x\n" + command,
                             named + "=x\n" + command,
                             named + "Other=\\x\n" + command,
                             "[Other]\nA=\\x\n" + named + command,
                             "[Other]x\n" + named + command}) {
        CAPTURE(text);
        CHECK_FALSE(ServiceFile::parse(text).has_value());
    }
}

TEST_CASE("command lines have a shell's quotes, and nothing is expanded") {
    const std::vector<std::pair<std::string, Strings>> table{
        {"", {}},
        {"  a\tb ", {"a", "b"}},
        {"'a b' \"c d\" e\\ f \"g\\\"h\" i'j'k ''", {"a b", "c d", "e f", "g\"h", "ijk", ""}},
        {"$HOME ~ * `x` a;b", {"$HOME", "~", "*", "`x`", "a;b"}},
        {"a\\'b", {"a'b"}},
        {"'a\\b' \"a\\b\" \"\\\\\"", {"a\\b", "a\\b", "\\"}},
        {"a#b c", {"a"}},
        {"a # b 'c", {"a"}},
    };
    for (const auto& row : table) {
        const auto& line = row.first;
        const auto& words = row.second;
        CAPTURE(line);
        CHECK((commandWords(line) == words));
    }
    for (const std::string line : {"'a", "\"a", "a\\", "\"a\\\"", "'a\\''b"}) {
        CAPTURE(line);
        CHECK_FALSE(commandWords(line).has_value());
    }
}

TEST_CASE("what systemd alone starts cannot be started by its command") {
    for (const std::string program : {"/bin/false", "/usr/bin/false"}) {
        auto file = ServiceFile::parse(named + "Exec=" + program + "\nSystemdService=x.service\n");
        REQUIRE(file);
        CHECK(file->systemdService == "x.service");
        CHECK_FALSE(file->isStartable());
        CHECK(ServiceFile{"org.a.b", {program}}.isStartable());
    }
    CHECK(ServiceFile{"org.a.b", {"/bin/a"}, "x.service"}.isStartable());
}

TEST_CASE("the first service of a name is meant") {
    ServiceTable services;
    services.add({"org.a.b", {"/bin/false"}, "x.service"});
    services.add(example());
    services.add({"org.a.c", {"/bin/first"}});
    services.add({"org.a.c", {"/bin/second"}});

    CHECK(services.find("org.a.b") == nullptr);
    REQUIRE(services.find("org.a.c") != nullptr);
    CHECK(services.find("org.a.c")->command == Strings{"/bin/first"});
    CHECK(services.find("org.a.d") == nullptr);
    CHECK(services.names() == Strings{"org.a.c"});
}
