#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "korvane-runner/Desktop/StatusArea.h"
#include "korvane-runner/StatusItem/StatusIcon.h"

#include <functional>
#include <memory>

namespace korvane::runner {

/// The status item of an instance, with its menu: the instance's name as a heading, "Show" and
/// "Quit". Shown for as long as it lives.
class KorvaneStatusItem {
public:
    using Action = std::function<void()>;

    /// `area` must outlive it. The actions are called on the loop's thread, and may end the loop.
    KorvaneStatusItem(const ambrel::InstanceConfig& config, StatusIconFiles icons, StatusArea& area,
                      Action onFocus, Action onQuit);
    KorvaneStatusItem(const KorvaneStatusItem&) = delete;
    KorvaneStatusItem& operator=(const KorvaneStatusItem&) = delete;
    ~KorvaneStatusItem();

    /// What "Show" does.
    void focusAction() const;
    /// What "Quit" does.
    void quitAction() const;

private:
    Action onFocus_;
    Action onQuit_;
    std::unique_ptr<StatusItem> item_; ///< last: it goes first
};

} // namespace korvane::runner
