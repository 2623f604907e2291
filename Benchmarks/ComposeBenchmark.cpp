// What composing a labelled icon costs, measured against its smallest possible part: encoding the
// seven images as PNG. compose-icon starts this program and says what the icon is.
#include "Ambrel/Icon/IconComposer.h"
#include "Ambrel/Icon/ImageReader.h"
#include "Ambrel/Platform/FileSystem.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <numeric>

namespace {

using ambrel::IconComposer;
using ambrel::IconLabel;
using ambrel::Image;

double millisecondsOf(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    const std::chrono::duration<double, std::milli> spent =
        std::chrono::steady_clock::now() - start;
    return spent.count();
}

void print(const char* name, std::vector<double> times) {
    std::sort(times.begin(), times.end());
    const auto count = static_cast<double>(times.size());
    const double mean = std::accumulate(times.begin(), times.end(), 0.0) / count;
    const double squares =
        std::accumulate(times.begin(), times.end(), 0.0, [&](double sum, double time) {
            return sum + (time - mean) * (time - mean);
        });
    std::printf("%-34s median %7.2f ms  mean %7.2f  spread %6.2f  least %7.2f  most %7.2f\n", name,
                times[times.size() / 2], mean, std::sqrt(squares / count), times.front(),
                times.back());
}

double medianOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: compose-benchmark SOURCE DESTINATION RUNS\n");
        return 2;
    }
    const ambrel::Path source = argv[1];
    const ambrel::Path destination = argv[2];
    const int runs = std::atoi(argv[3]);
    const IconLabel label{"Work", "ffcc00", IconLabel::Position::bottom};

    IconComposer::compose(source, label, destination); // also loads the libraries
    const auto images = ambrel::imagesIn(ambrel::fileSystem::read(destination));

    std::vector<double> composing;
    std::vector<double> encoding;
    std::vector<double> ratios;
    std::size_t bytes = 0;
    for (int i = 0; i < runs; ++i) { // in turns, so that what else the machine does meets both
        composing.push_back(
            millisecondsOf([&] { IconComposer::compose(source, label, destination); }));
        encoding.push_back(millisecondsOf([&] {
            bytes = 0;
            for (const Image& image : images) bytes += ambrel::images::encodePng(image).size();
        }));
        ratios.push_back(composing.back() / encoding.back());
    }
    print("compose, file to file", composing);
    print("PNG encoding of the seven images", encoding);
    std::sort(ratios.begin(), ratios.end());
    std::printf("ratio of each pair: median %.3f (%.3f to %.3f); %zu images, %zu bytes of PNG\n",
                medianOf(ratios), ratios.front(), ratios.back(), images.size(), bytes);
}
