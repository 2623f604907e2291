# What the manager is made of on Linux: the backends of its seams and the library behind them.

target_sources(KorvaneManager PRIVATE
    Desktop/Linux/Categories.cpp
    Desktop/Linux/EntryFiles.cpp
    Desktop/Linux/EntryText.cpp
    Desktop/Linux/ExistingEntry.cpp
    Desktop/Linux/OfferedTypes.cpp
    Desktop/Linux/Registration.cpp
    Desktop/Linux/ThemeIcons.cpp
    Desktop/Linux/TypeIndex.cpp
    Programs/Linux/AdoptedBundle.cpp
    Programs/Linux/Adoption.cpp
    Programs/Linux/BrowserIdentifiers.cpp
    Programs/Linux/DesktopEntry.cpp
    Programs/Linux/EngineMarks.cpp
    Programs/Linux/EntryCall.cpp
    Programs/Linux/EntrySearch.cpp
    Programs/Linux/IconSearch.cpp
    Programs/Linux/IconTheme.cpp
    Programs/Linux/LinkedLibraries.cpp
    Programs/Linux/PackageVersion.cpp
    Programs/Linux/ProgramFile.cpp
    Programs/Linux/ProgramFolders.cpp
    Programs/Linux/ProgramList.cpp
    Programs/Linux/ProgramTraits.cpp
    Programs/Linux/Terminal.cpp
    Programs/Linux/WebEngine.cpp
)

find_package(PkgConfig REQUIRED)
pkg_check_modules(elf REQUIRED IMPORTED_TARGET libelf)
target_link_libraries(KorvaneManager PRIVATE
    "$<BUILD_INTERFACE:PkgConfig::elf>" "$<INSTALL_INTERFACE:elf>")
set(MANAGER_PC_LIBS "-lelf")

# The profiles of programs are data. The manager of the build tree reads the ones here, so that one
# that is added or mended counts at once.
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/share/korvane")
file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}/Programs/Linux/Profiles"
    "${PROJECT_BINARY_DIR}/share/korvane/profiles" SYMBOLIC)
install(DIRECTORY Programs/Linux/Profiles/ DESTINATION "${CMAKE_INSTALL_DATADIR}/korvane/profiles"
    FILES_MATCHING PATTERN "*.json")
