#include "korvane-runner/Web/InstanceLog.h"

#include "Ambrel/Platform/FileSystem.h"
#include "korvane-runner/Web/PlainText.h"

#include <utility>

namespace korvane::runner {

namespace {

constexpr std::chrono::milliseconds longestWait{50};
constexpr std::size_t mostKept = 64 * 1024;

} // namespace

InstanceLog::InstanceLog(ambrel::Path file, AppLoop& loop)
    : file_(std::move(file)), loop_(loop), self_(std::make_shared<InstanceLog*>(this)) {}

InstanceLog::~InstanceLog() { flush(); }

void InstanceLog::add(std::string_view message) {
    if (file_.empty()) return; // else it would lie wherever the program was started
    kept_ += plainText::oneLine(message);
    kept_ += '\n';
    if (kept_.size() >= mostKept) {
        flush();
    } else {
        scheduleFlush();
    }
}

void InstanceLog::scheduleFlush() {
    if (std::exchange(isScheduled_, true)) return;
    loop_.after(longestWait, [weak = std::weak_ptr(self_)] {
        const auto self = weak.lock();
        if (!self) return;
        (*self)->isScheduled_ = false;
        (*self)->flush();
    });
}

void InstanceLog::flush() noexcept {
    if (kept_.empty()) return;
    try {
        ambrel::fileSystem::appendOrMake(file_, kept_);
    } catch (const ambrel::FileError&) {
        // Lines that cannot be written now are lost: to keep them would make them grow without end.
    }
    kept_.clear();
}

} // namespace korvane::runner
