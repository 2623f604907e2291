#pragma once

#include "Ambrel/Platform/SignalHold.h"

#include <csignal>

namespace ambrel {

/// The signals that ask this process to end and are held for it.
sigset_t requestsToEnd(const SignalHold& hold);

/// Whether the kernel sent the signal. Called in signal handlers.
ArrivedSignal::Sender senderOf(const siginfo_t& info) noexcept;

/// Whether this process leads its session.
bool leadsSession();

} // namespace ambrel
