# Icon files that are written here are read by Pillow and icnsutils.
add_executable(korvane-test-icon Support/IconSample.cpp)
target_link_libraries(korvane-test-icon PRIVATE KorvaneTestSupport)

# Without them everything is built, and the test fails.
#
# The first Python in PATH may be one without the system's packages.
function(korvane_has_pillow result interpreter)
    execute_process(COMMAND "${interpreter}" -c "from PIL import IcnsImagePlugin"
        RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
    if(NOT status EQUAL 0)
        set(${result} FALSE PARENT_SCOPE)
    endif()
endfunction()

find_program(KORVANE_PYTHON_WITH_PILLOW NAMES python3 VALIDATOR korvane_has_pillow
    DOC "Python 3 with Pillow (Debian: python3-pil)")
find_program(KORVANE_ICNS2PNG NAMES icns2png DOC "icns2png (Debian: icnsutils)")

add_test(NAME "IcnsForeignReaders: Pillow and icnsutils find every picture and pixel"
    COMMAND "${KORVANE_PYTHON_WITH_PILLOW}" "${CMAKE_CURRENT_SOURCE_DIR}/Ambrel/Formats/IcnsForeignReaders.py"
        $<TARGET_FILE:korvane-test-icon> "${KORVANE_ICNS2PNG}")
set_tests_properties("IcnsForeignReaders: Pillow and icnsutils find every picture and pixel"
    PROPERTIES TIMEOUT 120)
