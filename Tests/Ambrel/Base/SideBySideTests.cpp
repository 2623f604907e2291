#include "Ambrel/Base/SideBySide.h"

#include "Support/Expect.h"
#include "Support/Programs.h"

#include <numeric>
#include <stdexcept>
#include <sys/resource.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

std::vector<int> upTo(int count) {
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

int asInt(std::size_t number) { return static_cast<int>(number); }

} // namespace

TEST_CASE("works side by side give what they would one after another, on the calling thread") {
    for (const int count : {0, 1, 2, 3, 1000}) {
        std::vector<int> taken;
        bool isHere = true;
        const auto here = std::this_thread::get_id();

        sideBySide(static_cast<std::size_t>(count), asInt, [&](int number) {
            taken.push_back(number);
            isHere = isHere && std::this_thread::get_id() == here;
        });

        CHECK(taken == upTo(count));
        CHECK(isHere);
    }
}

TEST_CASE("where the system gives no more threads the calling one does all the work") {
    const auto done = asOrdinaryUser([] {
        const rlimit none{0, 0};
        if (::setrlimit(RLIMIT_NPROC, &none) != 0) return std::string("not limited");
        std::string numbers;
        for (const std::size_t count : {std::size_t{0}, std::size_t{3}}) {
            sideBySide(count, asInt, [&](int number) { numbers += std::to_string(number); });
        }
        return numbers;
    });

    CHECK(done == "012");
}

TEST_CASE("a work that waits for the next one gets it where the machine has two cores") {
    const bool hasTwo = std::thread::hardware_concurrency() >= 2;
    if (!hasTwo) MESSAGE("this machine has one core: works wait for nobody here");
    std::atomic<bool> secondBegan = !hasTwo;
    std::vector<int> taken;

    sideBySide(
        3,
        [&](std::size_t number) {
            if (number == 1) {
                secondBegan = true;
                secondBegan.notify_all();
            }
            secondBegan.wait(false);
            return asInt(number);
        },
        [&](int number) { taken.push_back(number); });

    CHECK(taken == upTo(3));
}

TEST_CASE("the first work that fails ends it after those before it were taken") {
    std::vector<int> taken;
    const auto work = [](std::size_t number) {
        if (number == 5 || number == 7) throw std::runtime_error(std::to_string(number));
        return asInt(number);
    };

    const auto error = expectThrow<std::runtime_error>(
        [&] { sideBySide(100, work, [&](int number) { taken.push_back(number); }); });

    CHECK(std::string(error.what()) == "5");
    CHECK(taken == upTo(5));
}

TEST_CASE("a failure of the one who takes ends it, after what had begun came to its end") {
    std::atomic<int> begun = 0;
    std::atomic<int> ended = 0;
    const auto work = [&](std::size_t number) {
        ++begun;
        std::this_thread::yield();
        ++ended;
        return asInt(number);
    };

    expectThrow<std::runtime_error>(
        [&] { sideBySide(10'000, work, [](int) { throw std::runtime_error("enough"); }); });

    CHECK(begun == ended);
}
