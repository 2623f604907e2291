#include "Ambrel/Home/HomesElsewhere.h"

#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Faults.h"

#include <cerrno>

using namespace korvane::test;

TEST_CASE("a list of homes that cannot be written is not tried over and over") {
    for (const int code : {EACCES, EROFS}) {
        CAPTURE(code);
        const TempDir tmp;
        const UserHome user(tmp);
        constexpr long calls = 15; // of one look and one try

        faults::arm(1, {.code = code, .lasting = true});
        ambrel::homesElsewhere::add(tmp / "far/Work", user.places());

        CHECK(faults::disarm().calls < calls);
    }
}
