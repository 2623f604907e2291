#include "Ambrel/Base/BusName.h"

#include "Support/Expect.h"

namespace ambrel::test {

TEST_CASE("a name on the bus has two elements at least, none of which begins with a digit") {
    for (const std::string good : {"a.b", "org.example.Mail", "_a._b", "org.example.Tray-12",
                                   "org.example.a1", "A.B.C.D.E"}) {
        CAPTURE(good);
        CHECK(isWellKnownBusName(good));
    }
    for (const std::string bad :
         {"", ".", "mail", "org.", ".org", "org..a", "org.1a", "1org.a", ":1.5", "org.ex ample",
          "org.example.*", "org.example;own", "org.\xc3\xa9.a", "org/a.b", "org.a."}) {
        CAPTURE(bad);
        CHECK_FALSE(isWellKnownBusName(bad));
    }
    CHECK(isWellKnownBusName("a." + std::string(253, 'b')));
    CHECK_FALSE(isWellKnownBusName("a." + std::string(254, 'b')));
}

TEST_CASE("a name space of the bus may be one element") {
    for (const std::string good : {"org", "org.a", "org.a-b", "_"}) {
        CAPTURE(good);
        CHECK(isBusNameSpace(good));
    }
    for (const std::string bad : {"", ".", "org.", ".org", "1org", "org..a", "org.1a", ":1.5"}) {
        CAPTURE(bad);
        CHECK_FALSE(isBusNameSpace(bad));
    }
    CHECK(isBusNameSpace(std::string(255, 'b')));
    CHECK_FALSE(isBusNameSpace(std::string(256, 'b')));
}

} // namespace ambrel::test
