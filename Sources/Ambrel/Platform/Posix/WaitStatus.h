#pragma once

#include <sys/wait.h>

namespace ambrel {

/// What is told of a program whose status nobody could take.
inline constexpr int lostStatus = 1;

/// The exit status of a process that has ended, of which wait(2) tells `word`, or the signal's
/// number where a signal ended it.
inline int terminationStatusOf(int word) {
    return WIFSIGNALED(word) ? WTERMSIG(word) : WEXITSTATUS(word);
}

} // namespace ambrel
