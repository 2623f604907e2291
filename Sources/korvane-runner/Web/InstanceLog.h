#pragma once

#include "Ambrel/Base/Path.h"
#include "korvane-runner/Desktop/AppLoop.h"

#include <memory>
#include <string>
#include <string_view>

namespace korvane::runner {

/// The log of an instance: lines without time or level, appended to a file that is made when it is
/// missing. They are kept for a moment and written together, because a page may cause thousands
/// at once. Every failure is swallowed: a log never affects what it tells of.
class InstanceLog {
public:
    /// An empty `file` keeps nothing.
    InstanceLog(ambrel::Path file, AppLoop& loop);
    InstanceLog(const InstanceLog&) = delete;
    InstanceLog& operator=(const InstanceLog&) = delete;
    /// Writes what is kept.
    ~InstanceLog();

    /// `message` becomes one line, whatever it holds.
    void add(std::string_view message);

    /// Writes what is kept, in order, now.
    void flush() noexcept;

private:
    void scheduleFlush();

    ambrel::Path file_;
    AppLoop& loop_;
    std::string kept_;
    bool isScheduled_ = false;
    std::shared_ptr<InstanceLog*> self_; ///< what the loop holds weakly
};

} // namespace korvane::runner
