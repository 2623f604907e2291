#include "Ambrel/Launch/SignalPolicy.h"

#include <csignal>

namespace ambrel {

namespace {

bool reachesGroup(const ArrivedSignal& signal) {
    const bool toLeaderAlone = signal.number == SIGHUP && signal.leadsSession;
    return signal.sender == ArrivedSignal::Sender::kernel && !toLeaderAlone;
}

} // namespace

bool SignalPolicy::passesOn(const ArrivedSignal& signal, WaitedAtStart waited) {
    // Whatever waited at the start is the first of its kind that is taken.
    const bool isFirst = arrived_.insert(signal.number).second;
    const bool cameTooEarly = isFirst && waited == WaitedAtStart::yes;
    return !reachesGroup(signal) || cameTooEarly;
}

} // namespace ambrel
