#pragma once

#include "Support/Programs.h"
#include "Support/TempDir.h"

#include <map>

namespace korvane::test {

/// A root folder that a program can be run in, with the system's own programs and libraries and
/// whatever the test puts beside them: for the paths that the product has fixed.
class NewRoot {
public:
    explicit NewRoot(const TempDir& tmp) : path_(makeFolder(tmp / "root")) {}

    Path operator/(const std::string& name) const { return path_ + "/" + name; }

    /// Runs `command`, whose first word is a program of this machine, with this root.
    ProgramResult run(std::vector<std::string> command,
                      const std::map<std::string, std::string>& environment) const {
        copyProgram(command.front(), path_ + "/program");
        command.front() = "/program";
        const std::string script = R"(cd "$0"
            for name in usr lib lib64 bin etc proc dev tmp; do
                [ -e "/$name" ] || continue
                if [ -L "/$name" ]; then
                    cp -P "/$name" "$name"
                else
                    mkdir -p "$name"
                    mount --rbind "/$name" "$name"
                fi
            done
            # Where it lies is not in an ordinary user's PATH.
            exec /usr/sbin/chroot . "$@")";
        std::vector<std::string> whole{"unshare", "-rm", "/bin/sh", "-ec", script, path_};
        whole.insert(whole.end(), command.begin(), command.end());
        return test::run({.command = whole, .environment = environment});
    }

private:
    Path path_;
};

} // namespace korvane::test
