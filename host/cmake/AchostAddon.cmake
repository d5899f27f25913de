# achost_add_addon(<target> GRC <file.grc> [IMAGES <dir>] SOURCES <src>... [LIBS <lib>...]
#                  [OUTPUT_DIRECTORY <dir>] [EXPORTS <version-script>])
#
# Builds an add-on as the host loads it: a MODULE library named <target>.so (no "lib" prefix) that
# exports only its four entry points (linker version script, hidden visibility), resolves every
# symbol at link time (-z defs) against the host library, and carries its resources, compiled from
# the GRC file and its icon images, in a section of its own. EXPORTS replaces the linker version
# script, for test add-ons that export something else on purpose.
function(achost_add_addon target)
    cmake_parse_arguments(ARG "" "GRC;IMAGES;OUTPUT_DIRECTORY;EXPORTS" "SOURCES;LIBS" ${ARGN})
    set(exports ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/addon-exports.map)
    if(ARG_EXPORTS)
        get_filename_component(exports ${ARG_EXPORTS} ABSOLUTE)
    endif()
    if(NOT ARG_GRC OR NOT ARG_SOURCES)
        message(FATAL_ERROR "achost_add_addon(${target}): GRC and SOURCES are required")
    endif()
    get_filename_component(grc ${ARG_GRC} ABSOLUTE)
    if(ARG_IMAGES)
        get_filename_component(images ${ARG_IMAGES} ABSOLUTE)
        file(GLOB image_files CONFIGURE_DEPENDS ${images}/*.png)
    else()
        get_filename_component(images ${grc} DIRECTORY)
        set(image_files)
    endif()

    set(res_dir ${CMAKE_CURRENT_BINARY_DIR}/${target}_resources)
    file(MAKE_DIRECTORY ${res_dir})
    add_custom_command(
        OUTPUT ${res_dir}/resources.S ${res_dir}/resources.bin
        COMMAND achost_grc ${grc} --images ${images} --output ${res_dir}/resources.bin
                --asm ${res_dir}/resources.S
        DEPENDS achost_grc ${grc} ${image_files}
        COMMENT "Compiling the resources of ${target}"
        VERBATIM)

    add_library(${target} MODULE ${ARG_SOURCES} ${res_dir}/resources.S)
    set_target_properties(${target} PROPERTIES PREFIX "" LINK_DEPENDS ${exports})
    if(ARG_OUTPUT_DIRECTORY)
        set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${ARG_OUTPUT_DIRECTORY})
    endif()
    target_link_libraries(${target} PRIVATE ${ARG_LIBS} achost_api xn_addon_flags)
    target_link_options(${target} PRIVATE -Wl,-z,defs -Wl,--version-script=${exports})
endfunction()
