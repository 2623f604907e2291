#include "Ambrel/Launch/SignalRelay.h"

namespace ambrel {

void SignalRelay::take(const ArrivedSignal& signal) {
    using WaitedAtStart = SignalPolicy::WaitedAtStart;
    const auto waited = child_.missed(signal.number) ? WaitedAtStart::yes : WaitedAtStart::no;
    if (policy_.passesOn(signal, waited)) child_.sendSignal(signal.number);
}

int SignalRelay::waitUntilExit(const SignalHold& signals) {
    while (child_.isRunning()) {
        if (const auto signal = signals.wait()) take(*signal);
    }
    return child_.terminationStatus();
}

} // namespace ambrel
