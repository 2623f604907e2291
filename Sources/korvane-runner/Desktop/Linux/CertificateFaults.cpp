#include "korvane-runner/Desktop/Linux/CertificateFaults.h"

namespace korvane::runner {

std::string certificateFaults(GTlsCertificateFlags faults) {
    static constexpr struct {
        GTlsCertificateFlags fault;
        const char* words;
    } words[] = {
        {G_TLS_CERTIFICATE_UNKNOWN_CA, "nobody trusted vouches for it"},
        {G_TLS_CERTIFICATE_BAD_IDENTITY, "it belongs to another site"},
        {G_TLS_CERTIFICATE_NOT_ACTIVATED, "it is not valid yet"},
        {G_TLS_CERTIFICATE_EXPIRED, "it has expired"},
        {G_TLS_CERTIFICATE_REVOKED, "it has been revoked"},
        {G_TLS_CERTIFICATE_INSECURE, "it is not secure"},
        {G_TLS_CERTIFICATE_GENERIC_ERROR, "it cannot be checked"},
    };
    std::string phrase;
    for (const auto& [fault, text] : words) {
        if (!(faults & fault)) continue;
        if (!phrase.empty()) phrase += ", ";
        phrase += text;
    }
    return phrase;
}

} // namespace korvane::runner
