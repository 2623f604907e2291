#pragma once

#include <string>
#include <vector>

/// Lets calls to the file system fail, in programs linked with the options of
/// FaultInjection.cmake.
namespace korvane::test::faults {

struct Failure {
    int code;     ///< the error number that the call gives
    bool lasting; ///< all calls after it fail too
    /// A folder without links in its path. Calls about files elsewhere neither count nor fail then:
    /// how many they are depends on the machine, and on what else runs. Empty: all count.
    std::string within{};
};

struct Outcome {
    long calls = 0;         ///< made while armed
    std::string failedCall; ///< the first that was made to fail; empty when none was
};

/// From now on counts the calls and makes number `failing`, counted from 1, fail.
void arm(long failing, const Failure& failure);
Outcome disarm();

/// From now on kills this process, as nothing can prevent, in place of call number `last`, counted
/// as those are that fail.
void armKill(long last, const std::string& within);

/// The names of all calls that can be made to fail.
std::vector<std::string> wrappedCalls();

} // namespace korvane::test::faults
