#include "Support/Environment.h"

#include <cstdlib>
#include <filesystem>

namespace korvane::test {

ScopedVariable::ScopedVariable(const std::string& name, const std::optional<std::string>& value)
    : name_(name) {
    if (const char* before = std::getenv(name.c_str())) before_ = before;
    set(name, value);
}

ScopedVariable::~ScopedVariable() { set(name_, before_); }

void ScopedVariable::set(const std::string& name, const std::optional<std::string>& value) {
    if (value) {
        ::setenv(name.c_str(), value->c_str(), 1);
    } else {
        ::unsetenv(name.c_str());
    }
}

WorkingDirectory::WorkingDirectory(const Path& folder)
    : before_(std::filesystem::current_path().string()) {
    std::filesystem::current_path(folder);
}

WorkingDirectory::~WorkingDirectory() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
}

} // namespace korvane::test
