# oculinex_add_test(<name> LABELS <unit|host|gui|slow…> [LIBRARIES <…>] [DIRECTORY <folder>])
# builds <name>.cpp (Qt Test) into the tests' directory, beside the probe plug-ins, and registers it.
# A test that needs other plug-ins beside it names a DIRECTORY below that one.
find_package(Qt5 5.15 REQUIRED COMPONENTS Test)

set(OCULINEX_TEST_DIR ${PROJECT_BINARY_DIR}/tests/run)

function(oculinex_add_test name)
    cmake_parse_arguments(ARG "" "DIRECTORY" "LABELS;LIBRARIES;SOURCES" ${ARGN})
    add_executable(${name} ${name}.cpp ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${OCULINEX_TEST_DIR}/${ARG_DIRECTORY})
    target_compile_definitions(${name} PRIVATE
        OCULINEX_SOURCE_DIR="${PROJECT_SOURCE_DIR}" OCULINEX_BINARY_DIR="${PROJECT_BINARY_DIR}")
    target_link_libraries(${name} PRIVATE
        OculinexQTStandAlone ArithmParamMgr Qt5::Test ${ARG_LIBRARIES})
    add_dependencies(${name} named probe probesource)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 300
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
endfunction()
