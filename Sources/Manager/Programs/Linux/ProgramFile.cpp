#include "Manager/Programs/Linux/ProgramFile.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Programs/Linux/LinkedLibraries.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>

namespace korvane {

using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

/// The first bytes of a file; less where it is shorter, nothing where it cannot be read.
std::string startOf(const Path& file, std::size_t length) {
    std::string text(length, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

/// How shell scripts name what finds and starts a Java machine.
bool looksForJava(const std::string& line) {
    constexpr std::string_view signs[] = {"java-wrappers", "run_java", "find_java_runtime",
                                          "JAVA_HOME",     "JAVACMD",  "JAVA_CMD",
                                          "bin/java",      "java -",   "exec java "};
    return std::ranges::any_of(
        signs, [&](std::string_view sign) { return line.find(sign) != std::string::npos; });
}

bool isJavaScript(const Path& file) {
    constexpr std::size_t enough = 65536;
    std::istringstream lines(startOf(file, enough));
    for (std::string line; std::getline(lines, line);) {
        const auto first = line.find_first_not_of(" \t");
        const bool isComment = first != std::string::npos && line[first] == '#';
        if (!isComment && looksForJava(line)) return true;
    }
    return false;
}

/// Programs that come with a Java machine have it in one of these places above their own folder.
bool hasMachineBeside(const Path& file) {
    const Path folder{paths::deletingLastComponent(file)};
    return std::ranges::any_of(
        std::array{"../lib/runtime/lib/libjvm.so", "../lib/runtime/lib/server/libjvm.so",
                   "../jbr/lib/server/libjvm.so", "eclipse.ini"},
        [&](const char* proof) { return fileSystem::exists(paths::join(folder, proof)); });
}

bool linksMachine(const Path& file) {
    const auto libraries = linkedLibraries(file);
    return libraries.contains("libjvm.so") || libraries.contains("libjli.so");
}

} // namespace

bool isScript(const Path& program) {
    if (!fileSystem::isExecutableFile(program)) return true;
    const auto start = startOf(program, 2);
    return start.size() < 2 || start == "#!";
}

bool isNamingLauncher(const Path& file) {
    constexpr std::size_t enough = 4096;
    if (!fileSystem::isExecutableFile(file)) return false;
    const auto text = startOf(file, enough);
    return text.starts_with("#!") && text.find(processNameVariable) != std::string::npos;
}

bool isJavaProgram(const Path& program) {
    const auto file = fileSystem::resolved(program);
    if (!file || fileSystem::isFolder(*file)) return false;
    if (paths::lastComponent(*file) == "java" || paths::extension(*file) == "jar") return true;
    if (startOf(*file, 2) == "#!") return isJavaScript(*file);
    return hasMachineBeside(*file) || linksMachine(*file);
}

} // namespace korvane
