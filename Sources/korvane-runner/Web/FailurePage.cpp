#include "korvane-runner/Web/FailurePage.h"

#include "korvane-runner/Web/NavigationRule.h"
#include "korvane-runner/Web/PlainText.h"

namespace korvane::runner {

namespace {

constexpr std::size_t longestShown = 300;
constexpr std::size_t longestLink = 100'000;

struct Words {
    const char* title;
    const char* text;
};

Words wordsFor(LoadFailure::Kind kind) {
    switch (kind) {
    case LoadFailure::Kind::notReached:
        break;
    case LoadFailure::Kind::notTrusted:
        return {"This connection is not safe",
                "The site could not prove that it is what it says it is. Somebody may be reading "
                "along, so nothing was sent to it."};
    case LoadFailure::Kind::crashed:
        return {"This page has stopped working",
                "Something went wrong while it was shown. What you had typed into it may be lost."};
    }
    return {"This page cannot be reached",
            "Check that the address is right and that this computer is connected to the internet."};
}

/// As much of an address or of a reason as a person reads.
std::string shown(const std::string& text) {
    const auto start = plainText::cut(text, longestShown);
    return plainText::html(plainText::oneLine(start)) + (start.size() < text.size() ? "…" : "");
}

std::string paragraph(const char* kind, const std::string& html) {
    return html.empty() ? html : "<p class=\"" + std::string(kind) + "\">" + html + "</p>\n";
}

/// A script or another program is nothing to try again.
std::string linkTo(const std::string& url) {
    const bool leadsBack = !url.empty() && url.size() <= longestLink &&
                           schemeOf(url) != "javascript" &&
                           destinationOf({.url = url}) == Destination::view;
    if (!leadsBack) return {};
    return "<p><a href=\"" + plainText::html(url) + "\">Try again</a></p>\n";
}

constexpr const char* head =
    R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="color-scheme" content="light dark">
<style>
:root { --ground: #fafafa; --text: #2e3436; --quiet: #6a6f72; --action: #1c71d8; }
@media (prefers-color-scheme: dark) {
  :root { --ground: #242424; --text: #f0f0f0; --quiet: #a8abad; --action: #78aeed; }
}
html { height: 100%; background: var(--ground); color: var(--text); font: 11pt/1.5 system-ui, sans-serif; }
body { min-height: 100%; margin: 0; display: flex; align-items: center; justify-content: center; }
main { max-width: 28em; padding: 2em; text-align: center; overflow-wrap: anywhere; }
h1 { font-size: 1.6em; line-height: 1.25; margin: 0 0 .6em; }
p { margin: 0 0 .8em; }
.quiet { color: var(--quiet); font-size: .9em; }
a { display: inline-block; margin-top: .8em; padding: .5em 1.4em; border-radius: .5em;
  background: var(--action); color: var(--ground); text-decoration: none; font-weight: 600; }
a:focus-visible { outline: 2px solid var(--text); outline-offset: 2px; }
</style>
)";

} // namespace

std::string failurePage(const LoadFailure& failure) {
    const auto words = wordsFor(failure.kind);
    const std::string title = words.title;
    return head +
           ("<title>" + title + "</title>\n</head>\n<body>\n<main>\n<h1>" + title + "</h1>\n") +
           paragraph("words", words.text) + paragraph("quiet", shown(failure.url)) +
           paragraph("quiet", shown(failure.reason)) + linkTo(failure.url) +
           "</main>\n</body>\n</html>\n";
}

} // namespace korvane::runner
