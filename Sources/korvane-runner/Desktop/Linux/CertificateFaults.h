#pragma once

#include <gio/gio.h>
#include <string>

namespace korvane::runner {

/// What is wrong with a site's certificate, as a phrase: "it belongs to another site, it has
/// expired".
std::string certificateFaults(GTlsCertificateFlags faults);

} // namespace korvane::runner
