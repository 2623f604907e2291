#include "korvane-runner/Bus/LeftProcesses.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace korvane::test;
using Kin = ChildProcessKind::Kin;
using Processes = std::vector<int>;

TEST_CASE("what nobody knows is the program's, and what services leave is theirs without windows") {
    struct Row {
        Kin kin;
        Processes programs;
        Processes services;
        Processes programsWithWindows;
    };
    const Row rows[] = {
        {Kin::program, {}, {}, {}},       {Kin::service, {}, {}, {}},
        {Kin::otherInstance, {}, {}, {}}, {Kin::ofService, {}, {7}, {7}},
        {Kin::unknown, {7}, {}, {7}},
    };
    for (const auto& row : rows) {
        CAPTURE(static_cast<int>(row.kin));
        const std::vector<ChildProcessKind> children{{7, row.kin}};

        CHECK((LeftProcesses::among(children, false) == LeftProcesses{row.programs, row.services}));
        CHECK((LeftProcesses::among(children, true) == LeftProcesses{row.programsWithWindows, {}}));
    }
}

TEST_CASE("where there are children and none is seen, somebody may be there") {
    CHECK(LeftProcesses::among({}, false).areUnseen);
    const std::vector<ChildProcessKind> two{{7, Kin::unknown}, {8, Kin::ofService}};
    CHECK((LeftProcesses::among(two, false) == LeftProcesses{{7}, {8}}));
}
