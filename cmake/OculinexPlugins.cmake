# What plug-ins are made with, in this project and in others that find it installed:
#
#   oculinex_add_algorithm(NAME <name> SOURCES <files…> [FOLDER baseArithm|extArithm]
#                          [OPENCV <components…>] [LIBRARIES <…>])
#   oculinex_add_data_source(NAME <name> SOURCES <files…> [OPENCV <components…>] [LIBRARIES <…>])
#     make a plug-in with the SDK; OPENCV names what it uses of OpenCV besides core.
#   oculinex_add_plugin(<name> FOLDER <folder> SOURCES <files…> [LIBRARIES <…>] [OUTPUT_DIR <directory>])
#     makes one without the SDK. A plug-in with an OUTPUT_DIR is not installed.
#   oculinex_deploy_plugins(<target>)
#     links the installed plug-ins, and those that the project has added so far, into the folders
#     beside the program, where it looks for them.
#
# Plug-ins are built into ${OCULINEX_PLUGIN_DIR}/<folder>, by default below plugins/ of the build tree.
include_guard(GLOBAL)
include(GNUInstallDirs)

function(oculinex_add_plugin name)
    cmake_parse_arguments(ARG "" "FOLDER;OUTPUT_DIR" "SOURCES;LIBRARIES" ${ARGN})
    add_library(${name} MODULE ${ARG_SOURCES})
    if(NOT ARG_OUTPUT_DIR)
        if(NOT OCULINEX_PLUGIN_DIR)
            set(OCULINEX_PLUGIN_DIR ${PROJECT_BINARY_DIR}/plugins)
        endif()
        set(ARG_OUTPUT_DIR ${OCULINEX_PLUGIN_DIR})
        install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/oculinex/${ARG_FOLDER})
        set_property(GLOBAL APPEND PROPERTY OCULINEX_PLUGINS ${name})
    endif()
    set_target_properties(${name} PROPERTIES PREFIX "" AUTOMOC OFF AUTOUIC OFF OCULINEX_FOLDER ${ARG_FOLDER}
        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
        LIBRARY_OUTPUT_DIRECTORY ${ARG_OUTPUT_DIR}/${ARG_FOLDER})
    target_compile_features(${name} PRIVATE cxx_std_17)
    # Plug-ins export functions of the same names: each calls its own.
    target_link_options(${name} PRIVATE -Wl,-Bsymbolic-functions)
    target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES})
endfunction()

function(_oculinex_add_sdk_plugin)
    cmake_parse_arguments(ARG "" "NAME;FOLDER" "SOURCES;LIBRARIES;OPENCV" ${ARGN})
    if(NOT ARG_NAME OR NOT ARG_SOURCES OR ARG_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "A plug-in needs NAME and SOURCES and knows FOLDER, OPENCV and LIBRARIES only; "
            "given was: ${ARGN}")
    endif()
    if(ARG_OPENCV)
        find_package(OpenCV 4.6 REQUIRED COMPONENTS core ${ARG_OPENCV})
        list(APPEND ARG_LIBRARIES ${OpenCV_LIBS})
    endif()
    oculinex_add_plugin(${ARG_NAME} FOLDER ${ARG_FOLDER} SOURCES ${ARG_SOURCES}
        LIBRARIES Oculinex::PluginSdk ${ARG_LIBRARIES})
    # The SDK's own symbols stay inside of each plug-in, which is never unloaded: its window may have a
    # preview that still computes.
    target_link_options(${ARG_NAME} PRIVATE -Wl,--exclude-libs,ALL -Wl,-z,nodelete)
endfunction()

function(oculinex_add_algorithm)
    cmake_parse_arguments(ARG "" "FOLDER" "" ${ARGN})
    if(NOT ARG_FOLDER)
        set(ARG_FOLDER baseArithm)
    elseif(NOT ARG_FOLDER MATCHES "^(base|ext)Arithm$")
        message(FATAL_ERROR "An algorithm's FOLDER is baseArithm or extArithm, not ${ARG_FOLDER}.")
    endif()
    _oculinex_add_sdk_plugin(${ARG_UNPARSED_ARGUMENTS} FOLDER ${ARG_FOLDER})
endfunction()

function(oculinex_add_data_source)
    _oculinex_add_sdk_plugin(${ARGN} FOLDER DataSource)
endfunction()

function(oculinex_deploy_plugins target)
    set(commands "")
    foreach(folder IN ITEMS baseArithm extArithm DataSource)
        list(APPEND commands COMMAND ${CMAKE_COMMAND} -E make_directory $<TARGET_FILE_DIR:${target}>/${folder})
        if(OCULINEX_INSTALLED_PLUGIN_DIR)
            file(GLOB files ${OCULINEX_INSTALLED_PLUGIN_DIR}/${folder}/*.so)
        endif()
        foreach(file IN LISTS files)
            get_filename_component(name ${file} NAME)
            list(APPEND commands COMMAND ${CMAKE_COMMAND} -E create_symlink ${file}
                $<TARGET_FILE_DIR:${target}>/${folder}/${name})
        endforeach()
    endforeach()
    get_property(plugins GLOBAL PROPERTY OCULINEX_PLUGINS)
    foreach(plugin IN LISTS plugins)
        get_target_property(folder ${plugin} OCULINEX_FOLDER)
        list(APPEND commands COMMAND ${CMAKE_COMMAND} -E create_symlink $<TARGET_FILE:${plugin}>
            $<TARGET_FILE_DIR:${target}>/${folder}/$<TARGET_FILE_NAME:${plugin}>)
        add_dependencies(${target} ${plugin})
    endforeach()
    add_custom_command(TARGET ${target} POST_BUILD ${commands} VERBATIM)
endfunction()
