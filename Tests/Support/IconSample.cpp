#include "Ambrel/Formats/Icns.h"
#include "Support/Files.h"
#include "Support/Icons.h"

#include <cstdio>
#include <exception>
#include <stdexcept>

/// Writes an icon file with the seven sizes, for readers that others wrote.
int main(int argc, char** argv) {
    try {
        if (argc != 2) throw std::runtime_error("Give the file to write");
        ambrel::icns::Writer writer;
        for (const std::uint32_t side : {1024U, 512U, 256U, 128U, 64U}) {
            writer.addPng(korvane::test::pngOf(korvane::test::samplePicture(side)));
        }
        for (const std::uint32_t side : {32U, 16U}) {
            writer.addRunLength(korvane::test::samplePicture(side));
        }
        korvane::test::writeFile(argv[1], writer.file());
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
