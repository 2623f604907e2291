#pragma once

#include "Support/Programs.h"
#include "Support/TempDir.h"

#include <doctest/doctest.h>
#include <sys/stat.h>

namespace korvane::test {

/// A pipe with a name, made at `path`. Reading it blocks until somebody has written to it.
inline Path makeFifo(const Path& path) {
    REQUIRE(::mkfifo(path.c_str(), 0600) == 0);
    return path;
}

/// A line of a shell that waits until what it put into the background last is this program. The
/// file is that of the program before anybody can read its environment.
inline std::string untilItIs(const Path& program) {
    return "until [ /proc/$!/exe -ef " + quoted(program) +
           " ] && grep -qs HOME= /proc/$!/environ; do :; done";
}

/// A shell that runs until it is let go, or to the end of the scope. The constructor returns once
/// it has done what `first` says.
class Waiting {
public:
    using Variables = std::map<std::string, std::string>;

    explicit Waiting(const Variables& environment = {}, const std::string& first = "true")
        : program_(
              {.command = {"/bin/sh", "-c", first + "; " + line()}, .environment = environment}),
          id_(std::stoi(readFile(ready_))) {}

    int id() const { return id_; }
    ProgramResult wait() { return program_.wait(); }
    ProgramResult letGo() {
        writeFile(go_, "x\n");
        return program_.wait();
    }

private:
    std::string line() const { return "echo $$ >" + quoted(ready_) + "; read x <" + quoted(go_); }

    TempDir tmp_;
    Path ready_ = makeFifo(tmp_ / "ready");
    Path go_ = makeFifo(tmp_ / "go");
    RunningProgram program_;
    int id_;
};

} // namespace korvane::test
