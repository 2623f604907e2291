#include "korvane-runner/Web/InstanceLog.h"

#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"
#include "korvane-runner/Web/FakeWebDesktop.h"

#include <sys/stat.h>

using namespace korvane::runner;
using namespace korvane::test;
using namespace std::string_literals;

TEST_CASE("log lines wait a moment and are then written together, in order, behind what is there") {
    const TempDir tmp;
    const auto file = writeFile(tmp / "log", "before\n");
    FakeLoop loop;
    InstanceLog log(file, loop);

    log.add("one");
    log.add("two — zwölf");
    CHECK(readFile(file) == "before\n");
    CHECK(loop.timers.size() == 1);
    loop.letTimePass();

    CHECK(readFile(file) == "before\none\ntwo — zwölf\n");
    log.add("three");
    loop.letTimePass();
    CHECK(readFile(file) == "before\none\ntwo — zwölf\nthree\n");
}

TEST_CASE("a log that is missing is made, also when it goes while lines are written") {
    const TempDir tmp;
    FakeLoop loop;
    InstanceLog log(tmp / "log", loop);

    log.add("one");
    log.flush();
    ::remove((tmp / "log").c_str());
    log.add("two");
    log.flush();

    CHECK(readFile(tmp / "log") == "two\n");
}

TEST_CASE("a log line stays one line, whatever the message holds") {
    const TempDir tmp;
    FakeLoop loop;
    InstanceLog log(tmp / "log", loop);

    log.add("a\nb\rc\r\nd\te\x1b[31m\0f\u0085g\u2028h\u2029i\u009bj\xff"s);
    log.flush();

    CHECK(readFile(tmp / "log") == "a b c d e [31m f g h i j\uFFFD\n");
}

TEST_CASE("100,000 log lines are all written, and few are kept meanwhile") {
    const TempDir tmp;
    FakeLoop loop;
    InstanceLog log(tmp / "log", loop);
    std::string expected;

    for (int i = 0; i < 100'000; ++i) {
        log.add("badge: " + std::to_string(i));
        expected += "badge: " + std::to_string(i) + "\n";
    }

    CHECK(loop.timers.size() == 1);
    const auto written = readFile(tmp / "log");
    CHECK(expected.size() - written.size() < 64 * 1024);
    loop.letTimePass();
    CHECK(readFile(tmp / "log") == expected);
}

TEST_CASE("what a log keeps is written when it goes, and its timer finds it gone") {
    const TempDir tmp;
    FakeLoop loop;
    {
        InstanceLog log(tmp / "log", loop);
        log.add("one");
    }
    CHECK(readFile(tmp / "log") == "one\n");
    loop.letTimePass();
    CHECK(readFile(tmp / "log") == "one\n");
}

TEST_CASE("a log that cannot be written is no matter") {
    const TempDir tmp;
    makeFolder(tmp / "folder");
    REQUIRE(::mkfifo((tmp / "pipe").c_str(), 0600) == 0); // nobody reads: to open it would wait
    FakeLoop loop;
    for (const auto& file : {tmp / "folder", tmp / "missing/log", tmp / "pipe", std::string()}) {
        CAPTURE(file);
        InstanceLog log(file, loop);
        log.add("one");
        log.flush();
        log.add("two");
    }
    CHECK_FALSE(isThere(tmp / "missing"));
}
