#pragma once

#include "Manager.h"

#include "Ambrel/Platform/PropertyList.h"

namespace korvane::test {

/// A manager, and a program that entries can be written for.
struct AdoptFixture {
    Manager manager;
    Path program = writeScript(manager.tmp / "bin/mailer",
                               "for a in \"$@\"; do printf '<%s>' \"$a\"; done; echo");

    Path writeEntry(const std::string& id, const std::string& lines) const {
        return writeFile(manager.tmp / ("share/applications/" + id + ".desktop"),
                         "[Desktop Entry]\nType=Application\nName=Mail Reader\n" + lines + "\n");
    }
    Path adopt(const std::string& what) const {
        const auto output = manager.result({"adopt", what});
        return output.substr(0, output.size() - 1);
    }
    ambrel::PropertyListDictionary infoOf(const Path& bundle) const {
        const auto info = ambrel::readPropertyList(bundle + "/Contents/Info.plist");
        REQUIRE(info);
        return *info;
    }
};

} // namespace korvane::test
