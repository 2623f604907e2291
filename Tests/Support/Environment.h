#pragma once

#include "Ambrel/Platform/UserPlaces.h"
#include "Support/Files.h"
#include "Support/TempDir.h"

#include <optional>
#include <string>

namespace korvane::test {

/// Sets a variable of this process, or removes it, until the end of the scope.
class ScopedVariable {
public:
    ScopedVariable(const std::string& name, const std::optional<std::string>& value);
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ~ScopedVariable();

private:
    static void set(const std::string& name, const std::optional<std::string>& value);

    std::string name_;
    std::optional<std::string> before_;
};

/// A home folder that stands for a user's own.
class UserHome {
public:
    explicit UserHome(const TempDir& tmp, const std::string& name = "user")
        : path_(makeFolder(tmp / name)) {}

    const Path& path() const { return path_; }
    Path operator/(const std::string& name) const { return path_ + "/" + name; }
    ambrel::UserPlaces places() const { return ambrel::UserPlaces::usual(path_); }

private:
    Path path_;
};

/// One that is also that of this process, and of the programs that it starts, until the end of the
/// scope.
class OwnUserHome : public UserHome {
public:
    explicit OwnUserHome(const TempDir& tmp, const std::string& name = "user")
        : UserHome(tmp, name), variable_("CFFIXED_USER_HOME", path()) {}

private:
    ScopedVariable variable_;
};

/// A user whose home is not there: that of the tests' own processes.
inline ambrel::UserPlaces nobody() {
    return ambrel::UserPlaces::usual("/nonexistent/korvane-test-home");
}

/// Changes the working directory until the end of the scope.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const Path& folder);
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;
    ~WorkingDirectory();

private:
    Path before_;
};

} // namespace korvane::test
