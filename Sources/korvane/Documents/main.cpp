#include "Ambrel/Platform/FileSystem.h"
#include "korvane/Documents/Completions.h"
#include "korvane/Documents/Manual.h"
#include "korvane/Verbs/AllVerbs.h"
#include "korvane/Verbs/ConfigEdit.h"

#include <iostream>

// korvane-documents SHEET BASH ZSH FISH MANUAL: writes the completions and the manual to the named
// files. A tool of the build, which is not installed.

namespace {

namespace documents = korvane::documents;
namespace fileSystem = ambrel::fileSystem;

void writeAll(const std::vector<ambrel::Path>& files) {
    const korvane::Surroundings surroundings{.input = std::cin,
                                             .results = std::cout,
                                             .messages = std::cerr,
                                             .environment = {},
                                             .user = {}};
    const documents::CompletionData data{documents::describe(korvane::allVerbs(), surroundings),
                                         korvane::edit::keys()};
    fileSystem::replace(files[1], documents::bashCompletion(data));
    fileSystem::replace(files[2], documents::zshCompletion(data));
    fileSystem::replace(files[3], documents::fishCompletion(data));
    fileSystem::replace(files[4], documents::manual(fileSystem::read(files[0]), data.verbs));
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<ambrel::Path> files(argv + 1, argv + argc);
    if (files.size() != 5) {
        std::cerr << "korvane-documents: wants SHEET BASH ZSH FISH MANUAL\n";
        return 2;
    }
    try {
        writeAll(files);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "korvane-documents: " << error.what() << '\n';
        return 1;
    }
}
