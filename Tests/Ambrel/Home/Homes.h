#pragma once

#include "Ambrel/Launch/InstanceLauncher.h"
#include "Support/Environment.h"

#include <map>

namespace korvane::test {

/// How many items were moved out of each folder.
using Counts = std::map<std::string, int>;

/// A user with the three folders and an instance home beside it.
struct Homes {
    explicit Homes(const TempDir& tmp) : user(tmp), instance(tmp / "instance") {
        for (const auto name : ambrel::InstanceLauncher::sharedUserFolders)
            makeFolder(user / std::string(name));
    }
    UserHome user;
    Path instance;
};

} // namespace korvane::test
