#pragma once

#include "BusStage.h"

#include <string>

namespace korvane::test {

/// What an actor says that has got a name, and one that was answered.
inline const std::string owned = "own (1,)";
inline const std::string answered = "ping ()";

/// What two processes say, in any order.
void expectBoth(BusStage& stage, const std::string& one, const std::string& other);

/// A runner whose program does these steps. When this is constructed it has said `word`, its first.
struct StartedActor : Started {
    StartedActor(BusStage& stage, const std::string& word, const Strings& steps);
};

/// The program says each signal that it gets, until `last` ends it.
void configureProbe(BusStage& stage, int last);

/// Returns once the process has ended, whoever its parent is.
void awaitEnd(int process);

ambrel::OwnedFd connectedTo(const Path& socket);
/// Whether somebody listens at the socket.
bool isAnswering(const Path& socket);

} // namespace korvane::test
