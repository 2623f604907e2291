#pragma once

#include "Ambrel/Instance/ResolvedInstance.h"
#include "Ambrel/Web/WebBadge.h"
#include "korvane-runner/Desktop/WebDesktop.h"
#include "korvane-runner/StatusItem/KorvaneStatusItem.h"
#include "korvane-runner/Web/BannerQueue.h"
#include "korvane-runner/Web/BridgeMessage.h"
#include "korvane-runner/Web/DownloadPlace.h"
#include "korvane-runner/Web/FrameFile.h"
#include "korvane-runner/Web/InstanceLog.h"
#include "korvane-runner/Web/LinkOpener.h"
#include "korvane-runner/Web/PermissionQuestion.h"
#include "korvane-runner/Web/ShownBadge.h"

#include <memory>

namespace korvane::runner {

/// What a web instance does from its first window to its end, decided without a toolkit: it shows
/// one site in one window, hands banners and a badge of its pages to the desktop, and keeps a log.
class WebAppDelegate final : public WebWindowEvents {
public:
    /// `user` and `links` are of the person at the machine, from before the home moved; `icon` is
    /// the instance's icon file, existing or not. `desktop` must outlive it.
    WebAppDelegate(ambrel::ResolvedInstance instance, const ambrel::UserPlaces& user,
                   LinkOpener links, ambrel::Path icon, WebDesktop& desktop);
    WebAppDelegate(const WebAppDelegate&) = delete;
    WebAppDelegate& operator=(const WebAppDelegate&) = delete;
    ~WebAppDelegate() override;

    /// Opens the window, where it was when it was last closed, begins to load the site, and shows
    /// the status item of an instance that has one. Throws DesktopError.
    void applicationDidFinishLaunching();

    /// Brings the window to the front.
    void present();

    /// Ends the instance as closing the window does: the frame is kept, the badge taken away, the
    /// log written, and the loop ends with 0. Once.
    void terminate();

    void messageArrived(const PageValue& message) override;
    void loadFinished(const std::string& title) override;
    void loadFailed(const LoadFailure& failure) override;
    void newWindowWanted(const NavigationRequest& request) override;
    bool navigationWanted(const NavigationRequest& request) override;
    void permissionWanted(Permission permission, const std::string& origin,
                          std::function<void(bool)> answer) override;
    bool printWanted() override;
    void printAnswered(bool isPrinted) override;
    ambrel::Path placeForDownload(const std::string& suggested) override;
    void downloadEnded(const Download& download) override;
    void closed() override;

private:
    void userContentController(const NotifyMessage& message);
    void userContentController(const BadgeMessage& message);
    void userContentController(const TitleMessage& message);

    void postNotification(const NotifyMessage& payload);
    void applyBadge();
    void log(const std::string& message);

    void loadSite();
    void showStatusItem();
    /// Hands the address to another program, once for what a person does: one click lets a page
    /// take any number of steps.
    void handOver(const std::string& url);
    void handOverIfWanted(const std::string& url);
    /// Asks the person, unless another question stands already: a page could cover the screen.
    /// The answer is no for a while once a person has said so several times in a row.
    void ask(const Question& question, std::function<void(bool)> answer);
    bool beginAsking();
    void wasAnswered(bool isWanted);

    ambrel::ResolvedInstance instance_;
    ambrel::UserPlaces user_;
    WebDesktop& desktop_;
    LinkOpener links_;
    ambrel::Path icon_;
    ambrel::WebBadgeState badge_;
    InstanceLog log_;
    BannerQueue banners_;
    ShownBadge shownBadge_;
    FrameFile frameFile_;
    DownloadPlace downloads_;
    std::string site_; ///< what is loaded first; empty where the configuration has no address
    bool showsFailure_ = false;
    bool isAsking_ = false;
    int refusals_ = 0; ///< in a row
    bool hasJustHandedOver_ = false;
    bool hasEnded_ = false;
    std::shared_ptr<WebAppDelegate*> self_; ///< what questions and the loop hold weakly
    std::optional<KorvaneStatusItem> statusItem_;
    std::unique_ptr<WebWindow> window_; ///< last: it goes first
};

} // namespace korvane::runner
