# What all targets of the project share.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion
    # Fused multiplies would round differently on ARM.
    -ffp-contract=off
    # Qt's logging macros leave out the arguments of a variadic one.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>)

# A host's own `void init()` must not capture the library's calls to its init(), while data stays
# open to being shared with the host.
function(oculinex_bind_functions target)
    target_link_options(${target} PRIVATE -Wl,-Bsymbolic-functions)
endfunction()

# oculinex_add_library(<name> HEADERS <installed headers…> SOURCES <…> LIBRARIES <public libraries…>
#                      PKGCONFIG_DEPS <packages>)
# makes one of the shared libraries: export header, soname, installed headers and pkg-config file.
function(oculinex_add_library name)
    cmake_parse_arguments(ARG "" "" "HEADERS;SOURCES;LIBRARIES;PKGCONFIG_DEPS" ${ARGN})
    add_library(${name} SHARED ${ARG_SOURCES} ${ARG_HEADERS})
    add_library(Oculinex::${name} ALIAS ${name})
    generate_export_header(${name})
    # The installed one finds its neighbour wherever they are: a host's own path does not count for it.
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1 INSTALL_RPATH $ORIGIN)
    oculinex_bind_functions(${name})
    # A host that unloads the library never takes the code from under a running thread.
    target_link_options(${name} PRIVATE -Wl,-z,nodelete)
    target_compile_features(${name} PUBLIC cxx_std_17)
    target_include_directories(${name} PUBLIC
        "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR};${CMAKE_CURRENT_BINARY_DIR}>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/oculinex>")
    target_link_libraries(${name} PUBLIC ${ARG_LIBRARIES})

    install(TARGETS ${name} EXPORT OculinexQTStandAloneTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
    string(TOLOWER ${name} lower)
    list(APPEND ARG_HEADERS ${CMAKE_CURRENT_BINARY_DIR}/${lower}_export.h)
    foreach(header IN LISTS ARG_HEADERS)
        get_filename_component(folder ${header} DIRECTORY)
        if(IS_ABSOLUTE ${header})
            set(folder "")
        endif()
        install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/oculinex/${folder})
    endforeach()
    # The prefix is told by the file's own place: the install may go anywhere.
    file(RELATIVE_PATH PREFIX_FROM_PKGCONFIG /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    list(JOIN ARG_PKGCONFIG_DEPS " " ARG_PKGCONFIG_DEPS)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

# What "./dev run" needs: the command-line host and every plug-in.
add_custom_target(oculinex-demo)
