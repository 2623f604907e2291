#include "korvane-runner/Desktop/Linux/CertificateFaults.h"

#include <doctest/doctest.h>

using namespace korvane::runner;

TEST_CASE("each fault of a certificate is told") {
    const auto faults = static_cast<GTlsCertificateFlags>(G_TLS_CERTIFICATE_BAD_IDENTITY |
                                                          G_TLS_CERTIFICATE_EXPIRED);

    CHECK(certificateFaults(faults) == "it belongs to another site, it has expired");
    CHECK(certificateFaults(G_TLS_CERTIFICATE_UNKNOWN_CA) == "nobody trusted vouches for it");
    for (int fault = 1; fault <= G_TLS_CERTIFICATE_GENERIC_ERROR; fault <<= 1) {
        CAPTURE(fault);
        CHECK_FALSE(certificateFaults(static_cast<GTlsCertificateFlags>(fault)).empty());
    }
}

TEST_CASE("of a certificate without a fault there is nothing to tell") {
    CHECK(certificateFaults(G_TLS_CERTIFICATE_NO_FLAGS).empty());
}
