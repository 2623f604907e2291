#include "korvane-runner/Bus/BusLifetime.h"

namespace korvane::runner::bus {

BusLifetime::Step BusLifetime::step(const Present& present, Time now) {
    next_.reset();
    if (present.anybody()) {
        aloneSince_.reset();
        return Step::stay;
    }
    if (present.services == 0) return Step::end;
    if (!aloneSince_) aloneSince_ = now;
    if (isInHurry_ || now >= *aloneSince_ + grace) return Step::endServices;
    next_ = *aloneSince_ + grace;
    return Step::stay;
}

} // namespace korvane::runner::bus
