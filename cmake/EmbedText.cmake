# embed_text(TARGET FILE text.js HEADER path/Name.h NAME scope::name)
#
# Gives TARGET the content of FILE as the constant NAME, a std::string_view that HEADER declares.
# The file is read when the target is built; nothing generated is kept beside the sources.
function(embed_text target)
    cmake_parse_arguments(PARSE_ARGV 1 embed "" "FILE;HEADER;NAME" "")

    get_filename_component(file "${embed_FILE}" ABSOLUTE)
    get_filename_component(name "${embed_FILE}" NAME)
    set(output "${CMAKE_CURRENT_BINARY_DIR}/EmbeddedTexts/${name}.cpp")
    set(writer "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/WriteEmbeddedText.cmake")
    add_custom_command(OUTPUT "${output}"
        COMMAND "${CMAKE_COMMAND}" "-DFILE=${file}" "-DHEADER=${embed_HEADER}"
            "-DNAME=${embed_NAME}" "-DOUTPUT=${output}" -P "${writer}"
        DEPENDS "${file}" "${writer}"
        VERBATIM)
    target_sources(${target} PRIVATE "${output}")
endfunction()
