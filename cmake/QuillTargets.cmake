# What every target of the house has in common.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

add_library(quill_warnings INTERFACE)
add_library(quill::warnings ALIAS quill_warnings)
target_compile_options(quill_warnings INTERFACE
    $<$<CXX_COMPILER_ID:GNU,Clang>:-Wall;-Wextra;-Wshadow;-Wconversion;-Wno-sign-conversion;-Werror>
    $<$<CXX_COMPILER_ID:MSVC>:/W4;/WX;/utf-8>)

# quill_add_test(NAME SOURCES ... LIBS ...): one GoogleTest program, its cases known to ctest.
# Tests find the project's root in QUILL_SOURCE_DIR; the corpus lies beside it and may be absent.
function(quill_add_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LIBS} GTest::gtest_main quill::warnings)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_compile_definitions(${name} PRIVATE
        QUILL_SOURCE_DIR="${PROJECT_SOURCE_DIR}" QUILL_BINARY_DIR="${PROJECT_BINARY_DIR}")
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
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
