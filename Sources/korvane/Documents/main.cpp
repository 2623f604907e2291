#include "Ambrel/Platform/FileSystem.h"
#include "korvane/Documents/Completions.h"
#include "korvane/Documents/Manual.h"
#include "korvane/Verbs/AllVerbs.h"
#include "korvane/Verbs/ConfigEdit.h"

#include <iostream>

// korvane-documents SHEET BASH ZSH FISH MANUAL: writes the completions to the named files, and the
// pages of the manual into the folder MANUAL, where those of an earlier build make way. A tool of
// the build, which is not installed.

namespace {

namespace documents = korvane::documents;
namespace fileSystem = ambrel::fileSystem;

void writePages(const ambrel::Path& folder, const std::map<std::string, std::string>& pages) {
    for (const auto& name : fileSystem::list(folder)) {
        const bool isOld = name.starts_with("korvane-") && !pages.contains(name);
        if (isOld) fileSystem::removeItem(ambrel::paths::join(folder, name));
    }
    for (const auto& [name, text] : pages) {
        fileSystem::replace(ambrel::paths::join(folder, name), text);
    }
}

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
    writePages(files[4], documents::manual(fileSystem::read(files[0]), data.verbs));
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
