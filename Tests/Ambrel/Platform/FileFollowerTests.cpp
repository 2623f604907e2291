#include "Ambrel/Platform/FileFollower.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Pipe.h"
#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <future>
#include <unistd.h>

namespace korvane::test {

using ambrel::FileFollower;
using ambrel::Pipe;

namespace {

struct Followed {
    TempDir tmp;
    Path file = tmp / "log";
    Pipe pipe = Pipe::make();

    int output() const { return pipe.writeEnd->get(); }
    void append(const std::string& bytes) const {
        std::ofstream(file, std::ios::app | std::ios::binary) << bytes;
    }
    std::string read(std::size_t size) const {
        std::string bytes(size, '\0');
        std::size_t have = 0;
        while (have < size) {
            const auto count = ::read(pipe.readEnd.get(), bytes.data() + have, size - have);
            REQUIRE(count > 0);
            have += static_cast<std::size_t>(count);
        }
        return bytes;
    }
    static void finish(FileFollower& follower) {
        std::promise<void> done;
        follower.finish([&] { done.set_value(); });
        done.get_future().wait();
        CHECK(follower.isDone());
    }
};

} // namespace

TEST_CASE("what is appended is handed on as it comes, and nothing from before") {
    Followed scene;
    scene.append("before\n");
    FileFollower follower(scene.tmp.path(), "log", scene.output());

    scene.append("one\n");
    CHECK(scene.read(4) == "one\n");
    scene.append(std::string("\0\xff\r", 3));
    CHECK(scene.read(3) == std::string("\0\xff\r", 3));
    scene.append("last");
    Followed::finish(follower);
    CHECK(scene.pipe.readToEnd() == "last");
}

TEST_CASE("a file that is not there yet or was begun anew is handed on from its start") {
    Followed scene;
    FileFollower follower(scene.tmp.path(), "log", scene.output());

    scene.append("first\n");
    CHECK(scene.read(6) == "first\n");
    writeFile(scene.file, "2\n");
    CHECK(scene.read(2) == "2\n");
    writeFile(scene.tmp / "another", "another file\n"); // longer, and there in one step
    REQUIRE(::rename((scene.tmp / "another").c_str(), scene.file.c_str()) == 0);
    Followed::finish(follower);
    CHECK(scene.pipe.readToEnd() == "another file\n");
}

TEST_CASE("a writer does not wait for a slow reader, and nothing is lost") {
    Followed scene;
    FileFollower follower(scene.tmp.path(), "log", scene.output());
    std::string all;
    for (int number = 0; number < 60000; ++number) all += std::to_string(number) + "\n";

    scene.append(all); // more than the pipe holds

    auto done = std::async(std::launch::async, [&] { Followed::finish(follower); });
    CHECK(scene.read(all.size()) == all);
    done.wait();
}

TEST_CASE("following ends when nobody reads any more, and is done then") {
    Followed scene;
    const auto before = ::signal(SIGPIPE, SIG_IGN);
    FileFollower follower(scene.tmp.path(), "log", scene.output());
    scene.pipe.readEnd = ambrel::OwnedFd();

    scene.append("to nobody\n");

    Followed::finish(follower);
    ::signal(SIGPIPE, before);
}

TEST_CASE("a file is not handed on into itself, nor what is no file") {
    Followed scene;
    scene.append("x");
    const auto same = ambrel::OwnedFd::open("write", scene.file, O_WRONLY | O_APPEND);
    FileFollower circle(scene.tmp.path(), "log", same.get());
    scene.append("y");
    Followed::finish(circle);
    CHECK(readFile(scene.file) == "xy");

    makeLink(scene.tmp / "zeros", "/dev/zero");
    FileFollower endless(scene.tmp.path(), "zeros", scene.output());
    Followed::finish(endless);
    CHECK(scene.pipe.readToEnd().empty());
}

TEST_CASE("a folder that is not there cannot be followed in") {
    Followed scene;
    CHECK_THROWS_AS(FileFollower(scene.tmp / "gone", "log", scene.output()), ambrel::FileError);
}

} // namespace korvane::test
