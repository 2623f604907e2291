#include "korvane-runner/Bus/EndRequest.h"

namespace korvane::runner::bus {

bool EndRequest::meansLeftBehind(Time now) const { return cameAt_ && now < *cameAt_ + same; }

} // namespace korvane::runner::bus
