#include "Manager/Rules/SiteAddress.h"

#include "Ambrel/Web/WebAddress.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/InstanceLookup.h"

namespace korvane {

using ambrel::WebAddressFault;

namespace {

/// Behind "… is no address of a web site: ".
std::string reasonOf(WebAddressFault fault) {
    switch (fault) {
    case WebAddressFault::empty:
        return "there is nothing in it.";
    case WebAddressFault::scheme:
        return "what stands before \"://\" is no scheme, such as https.";
    case WebAddressFault::noHost:
        return "it names no host, such as mail.example.org.";
    case WebAddressFault::badHost:
        return "its host holds a blank, a control character or a bracket that is not closed.";
    case WebAddressFault::port:
        return "what follows the colon behind its host is no number of a port.";
    }
    return {};
}

std::string sentenceOn(const std::string& url, WebAddressFault fault) {
    return inQuotes(url) + " is no address of a web site: " + reasonOf(fault);
}

} // namespace

void requireSiteAddress(const std::string& url) {
    const auto fault = ambrel::findWebAddressFault(url);
    if (fault) throw Refusal(Refusal::Kind::badAddress, url, sentenceOn(url, *fault));
}

std::optional<Notice> addressObstacle(const ambrel::InstanceRecord& record,
                                      const ambrel::UserPlaces& user) {
    if (record.config.kind != ambrel::ShortcutKind::web) return std::nullopt;
    const auto url = record.config.url.value_or("");
    const auto fault = ambrel::findWebAddressFault(url);
    if (!fault) return std::nullopt;
    return Notice{.kind = Notice::Kind::nothingToShow,
                  .subject = nameFor(record, user),
                  .sentence = sentenceOn(url, *fault) + " Its window is empty.",
                  .remedy = Remedy::changeAddress};
}

} // namespace korvane
