#include "Support/Files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fs = std::filesystem;

namespace korvane::test {
namespace {

std::string describe(const fs::directory_entry& entry) {
    if (entry.is_symlink()) return "link " + fs::read_symlink(entry.path()).string();
    if (entry.is_regular_file()) return "file " + readFile(entry.path().string());
    return entry.is_directory() ? "folder" : "other";
}

} // namespace

std::string readFile(const Path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error("Cannot read " + file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

Path writeFile(const Path& file, std::string_view bytes) {
    fs::create_directories(fs::path(file).parent_path());
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) throw std::runtime_error("Cannot write " + file);
    return file;
}

Path writeScript(const Path& file, std::string_view body) {
    writeFile(file, std::string("#!/bin/sh\n").append(body).append("\n"));
    setMode(file, 0755);
    return file;
}

Path makeFolder(const Path& folder) {
    fs::create_directories(folder);
    return folder;
}

void makeLink(const Path& link, const Path& target) {
    fs::create_directories(fs::path(link).parent_path());
    fs::create_symlink(target, link);
}

void setMode(const Path& path, mode_t mode) {
    if (::chmod(path.c_str(), mode) != 0) throw std::runtime_error("Cannot chmod " + path);
}

void copyProgram(const Path& from, const Path& to) {
    fs::create_directories(fs::path(to).parent_path());
    fs::copy_file(from, to);
    setMode(to, 0755);
}

bool isThere(const Path& path) { return fs::exists(fs::symlink_status(path)); }
bool isLink(const Path& path) { return fs::is_symlink(fs::symlink_status(path)); }
bool isRealFolder(const Path& path) { return fs::is_directory(fs::symlink_status(path)); }
std::string linkText(const Path& link) { return fs::read_symlink(link).string(); }

struct stat statusOf(const Path& path) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) throw std::runtime_error("Cannot stat " + path);
    return info;
}

mode_t modeOf(const Path& path) { return statusOf(path).st_mode & 07777U; }

std::vector<std::string> namesIn(const Path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::multiset<std::string> contentsBelow(const std::vector<Path>& folders) {
    std::multiset<std::string> contents;
    for (const auto& folder : folders) {
        if (!isRealFolder(folder)) continue;
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.is_symlink() || !entry.is_directory()) contents.insert(describe(entry));
        }
    }
    return contents;
}

std::multiset<std::string> snapshot(const Path& folder) {
    std::multiset<std::string> items;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const auto path = entry.path().string();
        items.insert(path + " " + std::to_string(modeOf(path)) + " " + describe(entry));
    }
    return items;
}

} // namespace korvane::test
