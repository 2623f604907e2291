# What the manager is made of on Linux: the backends of its seams and the library behind them.

target_sources(KorvaneManager PRIVATE
    Desktop/Linux/Categories.cpp
    Desktop/Linux/EntryFiles.cpp
    Desktop/Linux/EntryText.cpp
    Desktop/Linux/ExistingEntry.cpp
    Desktop/Linux/Registration.cpp
    Desktop/Linux/ThemeIcons.cpp
    Programs/Linux/Adoption.cpp
    Programs/Linux/DesktopEntry.cpp
    Programs/Linux/EngineMarks.cpp
    Programs/Linux/EntryCatalog.cpp
    Programs/Linux/LinkedLibraries.cpp
    Programs/Linux/PackageVersion.cpp
    Programs/Linux/ProgramTraits.cpp
)

find_package(PkgConfig REQUIRED)
pkg_check_modules(elf REQUIRED IMPORTED_TARGET libelf)
target_link_libraries(KorvaneManager PRIVATE PkgConfig::elf)

# The profiles of programs lie where the installed manager looks for them: beside the runner.
file(GLOB profiles CONFIGURE_DEPENDS Programs/Linux/Profiles/*.json)
foreach(profile IN LISTS profiles)
    get_filename_component(name "${profile}" NAME)
    configure_file("${profile}" "${PROJECT_BINARY_DIR}/lib/korvane/profiles/${name}" COPYONLY)
endforeach()
install(FILES ${profiles} DESTINATION lib/korvane/profiles)
