#include "Ambrel/Platform/OutputFile.h"

#include "Ambrel/Platform/FileError.h"
#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"

#include <unistd.h>

namespace korvane::test {

using ambrel::OutputFile;

namespace {

void write(const OutputFile& file, const std::string& text) {
    REQUIRE(::write(file.descriptor()->get(), text.data(), text.size()) ==
            static_cast<ssize_t>(text.size()));
}

} // namespace

TEST_CASE("what was written since is told, or the last of it") {
    const TempDir tmp;
    const auto path = writeFile(tmp / "log", "before\n");
    const auto file = OutputFile::appendingTo(path);

    CHECK(file.written(100).empty());
    write(file, "one\ntwo\n");

    CHECK(file.written(100) == "one\ntwo\n");
    CHECK(file.written(4) == "two\n");
    CHECK(readFile(path) == "before\none\ntwo\n");
    writeFile(path, "3"); // begun anew
    CHECK(file.written(100) == "3");
}

TEST_CASE("a file without a name keeps what is written to it, and lies nowhere") {
    const auto file = OutputFile::unnamed();
    write(file, "text");

    CHECK(file.written(100) == "text");
    struct stat status {};
    REQUIRE(::fstat(file.descriptor()->get(), &status) == 0);
    CHECK(status.st_nlink == 0);
    CHECK((status.st_mode & 0777) == 0600);
}

TEST_CASE("of what is no file nothing is told") {
    CHECK(OutputFile::appendingTo("/dev/null").written(100).empty());
    CHECK_THROWS_AS(OutputFile::appendingTo("/gone/log"), ambrel::FileError);
}

} // namespace korvane::test
