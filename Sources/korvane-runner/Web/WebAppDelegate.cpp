#include "korvane-runner/Web/WebAppDelegate.h"

#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Platform/Processes.h"
#include "Ambrel/Web/WebAddress.h"
#include "korvane-runner/Web/BridgeScript.h"
#include "korvane-runner/Web/FailurePage.h"
#include "korvane-runner/Web/NavigationRule.h"
#include "korvane-runner/Web/PlainText.h"
#include "korvane-runner/Web/WebStorage.h"

#include <utility>

namespace korvane::runner {

namespace {

using namespace ambrel;

constexpr const char* dash = " — ";
/// More than a title bar shows; a display server refuses what is much longer, and ends the program.
constexpr std::size_t longestTitle = 4096;
/// The engine counts what a page does for that long after a click as the person's.
constexpr std::chrono::seconds effectOfAClick{1};
/// A page that goes on asking would keep its window behind questions, and from being closed.
constexpr int mostRefusals = 3;
constexpr std::chrono::minutes restAfterRefusals{1};

Path logIn(const Path& home) {
    return home.empty() ? home : paths::join(home, InstanceLauncher::instanceLogName);
}

std::string addressOf(const InstanceConfig& config) {
    return config.url ? normalizedURL(*config.url).value_or(std::string()) : std::string();
}

/// As a person knows the place.
std::string shortened(const Path& folder, const UserPlaces& user) {
    const auto home = user.home + "/";
    return folder.starts_with(home) ? "~/" + folder.substr(home.size()) : folder;
}

Banner bannerFor(const Download& download, const UserPlaces& user) {
    const std::string name(paths::lastComponent(download.place));
    if (!download.failure.empty()) return {"Download failed", name + ": " + download.failure};
    const Path folder(paths::deletingLastComponent(download.place));
    return {"Download finished", name + " is in " + shortened(folder, user)};
}

} // namespace

WebAppDelegate::WebAppDelegate(ResolvedInstance instance, const UserPlaces& user, LinkOpener links,
                               Path icon, WebDesktop& desktop)
    : instance_(std::move(instance)), user_(user), desktop_(desktop), links_(std::move(links)),
      icon_(std::move(icon)), log_(logIn(instance_.home), desktop.loop()),
      banners_(desktop.banners()), shownBadge_(desktop.badge(), desktop.loop()),
      frameFile_(instance_.home, instance_.config.bundleId), downloads_(instance_, user),
      site_(addressOf(instance_.config)), self_(std::make_shared<WebAppDelegate*>(this)) {}

WebAppDelegate::~WebAppDelegate() = default;

void WebAppDelegate::applicationDidFinishLaunching() {
    const WebStorage storage{instance_.home};
    const bool isKept = storage.ensure();
    window_ = desktop_.openWindow({.title = instance_.config.displayName,
                                   .frame = frameFile_.read(),
                                   .data = isKept ? storage.data() : Path(),
                                   .cache = isKept ? storage.cache() : Path(),
                                   .script = bridgeScript,
                                   .handler = bridgeHandler},
                                  *this);
    loadSite(); // the engine's processes start while the window comes up
    window_->present();
    if (instance_.config.menuBarIcon) showStatusItem();
}

void WebAppDelegate::showStatusItem() {
    // The item goes with this object.
    statusItem_.emplace(
        instance_.config, StatusIconFiles{.own = icon_, .app = {}}, desktop_.statusArea(),
        [this] { present(); }, [this] { terminate(); });
}

void WebAppDelegate::loadSite() {
    if (site_.empty()) {
        window_->setTitle(instance_.config.displayName + dash + "invalid URL");
    } else if (destinationOf({.url = site_}) != Destination::view) {
        loadFailed({.url = site_, .reason = "Addresses of this kind are for other programs."});
    } else {
        window_->load(site_);
    }
}

void WebAppDelegate::present() {
    if (!window_) return;
    window_->present();
    // A window manager may refuse it to a window that nobody has just clicked into.
    desktop_.windows().bringToFront({ownProcessId()});
}

void WebAppDelegate::terminate() {
    if (std::exchange(hasEnded_, true)) return;
    if (window_) frameFile_.write(window_->frame());
    shownBadge_.clear();
    log_.flush();
    desktop_.flush();
    desktop_.loop().end(0);
}

void WebAppDelegate::closed() { terminate(); }

void WebAppDelegate::messageArrived(const PageValue& message) {
    if (hasEnded_) return;     // it would set the badge again, while the last of it is sent
    if (showsFailure_) return; // the window's own page has the script, but nothing to say
    if (const auto asked = readBridgeMessage(message)) {
        std::visit([this](const auto& payload) { userContentController(payload); }, *asked);
    }
}

void WebAppDelegate::userContentController(const NotifyMessage& message) {
    postNotification(message);
}

void WebAppDelegate::userContentController(const BadgeMessage& message) {
    badge_.setAPIBadge(message.count);
    applyBadge();
}

void WebAppDelegate::userContentController(const TitleMessage& message) {
    badge_.setTitle(message.title);
    applyBadge();
}

void WebAppDelegate::postNotification(const NotifyMessage& payload) {
    const auto& title = payload.title.empty() ? instance_.config.displayName : payload.title;
    banners_.post({title, payload.body});
    log("notify: " + title + dash + payload.body);
}

void WebAppDelegate::applyBadge() {
    shownBadge_.set(badge_.apiBadge.value_or(badge_.titleBadge));
    log("badge: " + badge_.label().value_or("cleared"));
}

void WebAppDelegate::log(const std::string& message) { log_.add(message); }

void WebAppDelegate::loadFinished(const std::string& title) {
    if (!title.empty()) window_->setTitle(std::string(plainText::cut(title, longestTitle)));
}

void WebAppDelegate::loadFailed(const LoadFailure& failure) {
    showsFailure_ = true;
    window_->showPage(failurePage(failure), failure.url);
}

void WebAppDelegate::newWindowWanted(const NavigationRequest& request) {
    const auto scheme = schemeOf(request.url);
    if (scheme.empty() || scheme == "about" || scheme == "javascript") return;
    // Loaded by the host, a file would open for a page that may not go there by itself.
    if (scheme == "file" && schemeOf(site_) != "file") return;
    if (navigationWanted(request)) window_->load(request.url);
}

bool WebAppDelegate::navigationWanted(const NavigationRequest& request) {
    switch (destinationOf(request)) {
    case Destination::view:
        showsFailure_ = false; // a page of a site takes the place of the window's own
        return true;
    case Destination::otherProgram:
        handOver(request.url);
        break;
    case Destination::otherProgramIfWanted:
        handOverIfWanted(request.url);
        break;
    case Destination::nowhere:
        break;
    }
    return false;
}

void WebAppDelegate::handOver(const std::string& url) {
    if (std::exchange(hasJustHandedOver_, true)) return;
    links_.open(url);
    desktop_.loop().after(effectOfAClick, [weak = std::weak_ptr(self_)] {
        if (const auto self = weak.lock()) (*self)->hasJustHandedOver_ = false;
    });
}

void WebAppDelegate::handOverIfWanted(const std::string& url) {
    ask(otherProgramQuestion(url), [this, url](bool isWanted) {
        if (isWanted) links_.open(url);
    });
}

void WebAppDelegate::permissionWanted(Permission permission, const std::string& origin,
                                      std::function<void(bool)> answer) {
    ask(permissionQuestion(permission, origin), std::move(answer));
}

void WebAppDelegate::ask(const Question& question, std::function<void(bool)> answer) {
    if (!beginAsking()) return answer(false);
    // The window answers no when it goes, and it goes with this object.
    window_->ask(question.text, question.yes,
                 [weak = std::weak_ptr(self_), answer = std::move(answer)](bool isWanted) {
                     const auto self = weak.lock();
                     if (self) (*self)->wasAnswered(isWanted);
                     answer(self && isWanted);
                 });
}

bool WebAppDelegate::printWanted() { return beginAsking(); }

void WebAppDelegate::printAnswered(bool isPrinted) { wasAnswered(isPrinted); }

bool WebAppDelegate::beginAsking() {
    if (isAsking_ || hasEnded_ || refusals_ >= mostRefusals) return false;
    isAsking_ = true;
    return true;
}

void WebAppDelegate::wasAnswered(bool isWanted) {
    isAsking_ = false;
    refusals_ = isWanted ? 0 : refusals_ + 1;
    if (refusals_ < mostRefusals) return;
    desktop_.loop().after(restAfterRefusals, [weak = std::weak_ptr(self_)] {
        if (const auto self = weak.lock()) (*self)->refusals_ = 0;
    });
}

Path WebAppDelegate::placeForDownload(const std::string& suggested) {
    auto place = downloads_.choose(suggested);
    if (place.empty()) {
        banners_.post({"Download failed",
                       DownloadPlace::safeName(suggested) + ": there is no folder for it"});
    }
    return place;
}

void WebAppDelegate::downloadEnded(const Download& download) {
    downloads_.ended(download.place);
    if (!download.wasCancelled) banners_.post(bannerFor(download, user_));
}

} // namespace korvane::runner
