// What a page of a web instance gets instead of the engine's own notifications and badges: objects
// that post messages to the host. Run at the start of each document, in the main frame, before any
// script of the page.
//
// Not in strict mode as a whole: a plain assignment that a page has made impossible must not end
// the script before the steps that follow it.
(function () {
    var apply = Reflect.apply;
    var then = Promise.prototype.then;

    function ignore() {}

    function post(type, payload) {
        try {
            var sent = window.webkit.messageHandlers.korvane.postMessage({
                type: type,
                payload: payload,
            });
            // The engine answers by a promise. One that is rejected, for a value that cannot be
            // sent, is not the page's business. By the engine's own functions, which the page may
            // have replaced meanwhile.
            apply(then, sent, [undefined, ignore]);
        } catch (error) {
            // A page without the handler, or one that has replaced it, has no host to speak to.
        }
    }

    function KorvaneNotification(title, options) {
        "use strict"; // called without "new", it must not write to the window
        options = options || {};
        post("notify", { title: String(title || ""), body: String(options.body || "") });
        this.title = title;
        this.body = options.body;
        this.onclick = null;
        this.onclose = null;
        this.onshow = null;
        this.onerror = null;
    }
    KorvaneNotification.permission = "granted";
    KorvaneNotification.requestPermission = function (cb) {
        if (typeof cb === "function") cb("granted");
        return Promise.resolve("granted");
    };
    KorvaneNotification.prototype.close = function () {};
    KorvaneNotification.prototype.addEventListener = function () {};
    KorvaneNotification.prototype.removeEventListener = function () {};

    try {
        Object.defineProperty(window, "Notification", {
            value: KorvaneNotification,
            writable: true,
            configurable: true,
        });
    } catch (error) {
        window.Notification = KorvaneNotification;
    }

    try {
        navigator.setAppBadge = function (n) {
            post("badge", { count: typeof n === "number" ? n : 0, source: "api" });
            return Promise.resolve();
        };
        navigator.clearAppBadge = function () {
            post("badge", { count: 0, source: "api" });
            return Promise.resolve();
        };
    } catch (error) {
        // The page goes on without a badge.
    }

    function postTitle() {
        post("title", { title: document.title || "" });
    }

    function startTitleWatch() {
        var title = document.querySelector("title");
        if (title) {
            new MutationObserver(postTitle).observe(title, {
                childList: true,
                subtree: true,
                characterData: true,
            });
        }
        postTitle();
    }

    if (document.readyState === "loading") {
        document.addEventListener("DOMContentLoaded", startTitleWatch);
    } else {
        startTitleWatch();
    }
})();
