#include "korvane-runner/Bus/EndRequest.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace std::chrono_literals;

TEST_CASE("a request means what a program leaves behind that ends soon after it") {
    const EndRequest::Time start{};
    EndRequest request;
    CHECK_FALSE(request.meansLeftBehind(start));

    request.come(start);
    CHECK(request.meansLeftBehind(start));
    CHECK(request.meansLeftBehind(start + 9'999ms));
    CHECK_FALSE(request.meansLeftBehind(start + 10s));

    request.come(start + 20s); // once more
    CHECK(request.meansLeftBehind(start + 29s));
    CHECK_FALSE(request.meansLeftBehind(start + 30s));
}
