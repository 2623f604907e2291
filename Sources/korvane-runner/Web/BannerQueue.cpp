#include "korvane-runner/Web/BannerQueue.h"

#include "korvane-runner/Web/PlainText.h"

#include <utility>

namespace korvane::runner {

BannerQueue::BannerQueue(Banners& banners)
    : banners_(banners), self_(std::make_shared<BannerQueue*>(this)) {}

void BannerQueue::post(const Banner& banner) {
    waiting_.push_back({plainText::oneLine(banner.title), plainText::lines(banner.body)});
    handOver();
    if (waiting_.size() > mostWaiting) waiting_.pop_front(); // the newest is worth most
}

void BannerQueue::handOver() {
    while (underWay_ < mostUnderWay && !waiting_.empty()) {
        ++underWay_;
        const auto banner = std::move(waiting_.front());
        waiting_.pop_front();
        banners_.post(banner, [weak = std::weak_ptr(self_)] {
            const auto self = weak.lock();
            if (!self) return;
            --(*self)->underWay_;
            (*self)->handOver();
        });
    }
}

} // namespace korvane::runner
