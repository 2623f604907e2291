#pragma once

#include "Ambrel/Base/Path.h"
#include "korvane-runner/Desktop/PageValue.h"
#include "korvane-runner/Desktop/WindowFrame.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace korvane::runner {

/// Why an address is not shown.
struct LoadFailure {
    enum class Kind {
        notReached, ///< no answer, or one that is none
        notTrusted, ///< the certificate of the other side is not what it should be
        crashed,    ///< the process that shows the page ended
    };
    Kind kind = Kind::notReached;
    std::string url;    ///< what was to be shown
    std::string reason; ///< a phrase of the engine's; may be empty
};

/// A step to another address that a page wants to take.
struct NavigationRequest {
    std::string url;
    bool fromClick = false; ///< a person caused it: a click, a key
};

/// What a page may be allowed.
enum class Permission { camera, microphone, cameraAndMicrophone, location };

/// A file that a page has handed out.
struct Download {
    ambrel::Path place;  ///< where it was to lie
    std::string failure; ///< a phrase of the engine's; empty when the file is there, complete
    bool wasCancelled = false;
};

/// What a window tells whoever shows it, and asks. Called on the main thread. Nothing of it throws.
class WebWindowEvents {
public:
    virtual ~WebWindowEvents() = default;

    /// The main frame's page, or any other frame, has posted `message` to the script's handler.
    virtual void messageArrived(const PageValue& message) = 0;

    /// A page has been loaded to its end; `title` is empty where it has none. Not called for the
    /// window's own pages (showPage), nor after a failure.
    virtual void loadFinished(const std::string& title) = 0;
    virtual void loadFailed(const LoadFailure& failure) = 0;

    /// A link or script asks for a window of its own, for an address that may be empty. There never
    /// is one.
    virtual void newWindowWanted(const NavigationRequest& request) = 0;

    /// Whether the view itself goes there.
    virtual bool navigationWanted(const NavigationRequest& request) = 0;

    /// `origin` is scheme and host as a person reads them. `answer` is called once, now or later.
    virtual void permissionWanted(Permission permission, const std::string& origin,
                                  std::function<void(bool)> answer) = 0;

    /// Whether a page may put up the dialog for printing. printAnswered() follows when it may, and
    /// the window stays.
    virtual bool printWanted() = 0;
    virtual void printAnswered(bool isPrinted) = 0;

    /// The absolute path for a file that the site calls `suggested`, where nothing lies. Empty
    /// where it can lie nowhere.
    virtual ambrel::Path placeForDownload(const std::string& suggested) = 0;
    virtual void downloadEnded(const Download& download) = 0;

    /// The person has closed the window, or the page has closed itself. It is still there during
    /// the call.
    virtual void closed() = 0;
};

/// What a window is made of.
struct WebWindowSetup {
    std::string title;
    WindowFrame frame;       ///< the position counts where the desktop lets windows choose it
    ambrel::Path data;       ///< what pages keep: cookies, storage. Empty: nothing is kept
    ambrel::Path cache;      ///< what the engine keeps, and the Cache API's data. Empty as `data`
    std::string_view script; ///< run at the start of each document, in the main frame alone
    std::string handler;     ///< window.webkit.messageHandlers.NAME, for pages to post to
};

/// The one window of a web instance: nothing but a view of pages, with the desktop's own title bar.
///
/// What it does by itself, with the desktop's own dialogs and keys: back and forward (gesture,
/// mouse buttons, Alt+arrows), reload, zoom, find, print, full screen, quit; choosing files; alert,
/// confirm, prompt and the question whether to leave a page; name and password for a site.
class WebWindow {
public:
    virtual ~WebWindow() = default;

    virtual void setTitle(const std::string& title) = 0;

    /// Loads `url`, giving up after a minute without an answer.
    virtual void load(const std::string& url) = 0;

    /// Shows `html` as what stands at `url`, so that going there again means loading that.
    virtual void showPage(const std::string& html, const std::string& url) = 0;

    /// Asks the person a question that can be answered with `yes` or with "Cancel"; `answer` gets
    /// false when the window goes before. One at a time: the next when this one was answered.
    virtual void ask(const std::string& question, const std::string& yes,
                     std::function<void(bool)> answer) = 0;

    /// Brings the window to the front.
    virtual void present() = 0;

    /// As it is now; its size alone before it was shown.
    virtual WindowFrame frame() const = 0;
};

} // namespace korvane::runner
