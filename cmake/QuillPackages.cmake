# Every package that the project uses: Debian's, or on Windows those of vcpkg.json.
find_package(Threads REQUIRED)
find_package(Python 3.12 EXACT COMPONENTS Interpreter Development.Module REQUIRED)
find_package(pybind11 CONFIG REQUIRED)
find_package(fmt CONFIG REQUIRED)
find_package(spdlog CONFIG REQUIRED)
find_package(nlohmann_json CONFIG REQUIRED)
find_package(Qt6 REQUIRED COMPONENTS Core)
# Its own package file names what the library links in turn; Debian's has none.
find_package(Protobuf CONFIG QUIET)
if(NOT Protobuf_FOUND)
    find_package(Protobuf MODULE REQUIRED)
endif()
find_package(pegtl REQUIRED)
find_package(pugixml REQUIRED)
find_package(ZLIB REQUIRED)
find_package(SQLite3 REQUIRED)
if(QUILL_BUILD_TESTS)
    find_package(GTest CONFIG REQUIRED)
endif()
# What our own readers of captures are compared with, in a test and a bench.
if(QUILL_BUILD_TESTS OR QUILL_BUILD_BENCH)
    find_library(PCAP_LIBRARY NAMES pcap wpcap REQUIRED)
    find_path(PCAP_INCLUDE_DIR pcap/pcap.h REQUIRED)
    add_library(quill::pcap UNKNOWN IMPORTED)
    set_target_properties(quill::pcap PROPERTIES
        IMPORTED_LOCATION ${PCAP_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${PCAP_INCLUDE_DIR})
endif()
