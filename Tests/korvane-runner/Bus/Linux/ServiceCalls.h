#pragma once

#include "RawClient.h"

namespace korvane::test {

/// The name of the service that tests have started.
inline const std::string service = "org.example.Service";

inline RawMessage callToService(std::uint32_t serial) {
    auto call = callTo(service);
    call.serial = serial;
    return call;
}

} // namespace korvane::test
