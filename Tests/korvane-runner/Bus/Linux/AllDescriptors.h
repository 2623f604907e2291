#pragma once

#include <doctest/doctest.h>
#include <sys/resource.h>

namespace korvane::test {

/// As many descriptors as this process may have, to the end of the scope; as many of an ordinary
/// user's may be on their way, too.
class AllDescriptors {
public:
    AllDescriptors() {
        REQUIRE(::getrlimit(RLIMIT_NOFILE, &before_) == 0);
        const rlimit all{before_.rlim_max, before_.rlim_max};
        REQUIRE(::setrlimit(RLIMIT_NOFILE, &all) == 0);
    }
    AllDescriptors(const AllDescriptors&) = delete;
    AllDescriptors& operator=(const AllDescriptors&) = delete;
    ~AllDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }

private:
    rlimit before_{};
};

} // namespace korvane::test
