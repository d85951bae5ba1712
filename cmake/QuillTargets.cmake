# What every target of the house has in common.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

# Windows looks for runtime libraries beside a program, so tests lie where those are.
set(QUILL_TEST_DIRECTORY ${PROJECT_BINARY_DIR}/$<IF:$<PLATFORM_ID:Windows>,bin,tests>)

add_library(quill_warnings INTERFACE)
add_library(quill::warnings ALIAS quill_warnings)
target_compile_options(quill_warnings INTERFACE
    $<$<CXX_COMPILER_ID:GNU,Clang>:-Wall;-Wextra;-Wshadow;-Wconversion;-Wno-sign-conversion;-Werror>
    $<$<CXX_COMPILER_ID:MSVC>:/W4;/utf-8;/permissive-;/Zc:__cplusplus;/bigobj>)
# GCC 12 sees overlapping copies in its own std::string at -O3 (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(quill_warnings INTERFACE $<$<CONFIG:Release>:-Wno-restrict>)
endif()
# The system's header defines min and max as macros otherwise, and the C library's own functions
# count as unsafe.
target_compile_definitions(quill_warnings INTERFACE
    $<$<PLATFORM_ID:Windows>:NOMINMAX;WIN32_LEAN_AND_MEAN;_CRT_SECURE_NO_WARNINGS>)

# quill_add_test(NAME SOURCES ... LIBS ...): one GoogleTest program, its cases known to ctest.
# Tests find the project's root in QUILL_SOURCE_DIR; the corpus lies beside it and may be absent.
function(quill_add_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBS} GTest::gtest_main quill::warnings)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_compile_definitions(${name} PRIVATE
        QUILL_SOURCE_DIR="${PROJECT_SOURCE_DIR}" QUILL_BINARY_DIR="${PROJECT_BINARY_DIR}")
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${QUILL_TEST_DIRECTORY})
    add_dependencies(quill_tests ${name})
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300)
endfunction()

# quill_add_bench(NAME SOURCES ... LIBS ...): a benchmark that runs one short round as a smoke test.
function(quill_add_bench name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBS} quill::warnings)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/bench)
    target_compile_definitions(${name} PRIVATE
        QUILL_SOURCE_DIR="${PROJECT_SOURCE_DIR}" QUILL_BINARY_DIR="${PROJECT_BINARY_DIR}")
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bench)
endfunction()
