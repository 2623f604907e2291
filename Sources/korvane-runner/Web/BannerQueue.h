#pragma once

#include "korvane-runner/Desktop/Banners.h"

#include <deque>
#include <memory>

namespace korvane::runner {

/// Hands banners to a desktop no faster than it takes them. A page may ask for thousands at once;
/// what nobody could read any more is dropped, the oldest first.
class BannerQueue {
public:
    static constexpr std::size_t mostUnderWay = 8;
    static constexpr std::size_t mostWaiting = 64;

    explicit BannerQueue(Banners& banners);
    BannerQueue(const BannerQueue&) = delete;
    BannerQueue& operator=(const BannerQueue&) = delete;

    /// Texts are made plain, whatever a page put into them.
    void post(const Banner& banner);

private:
    void handOver();

    Banners& banners_;
    std::deque<Banner> waiting_;
    std::size_t underWay_ = 0;
    std::shared_ptr<BannerQueue*> self_; ///< what the desktop holds weakly
};

} // namespace korvane::runner
