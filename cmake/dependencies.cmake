# The libraries that ./run fetched and cross-built, as imported targets.
function(imported_library name)
    cmake_parse_arguments(arg "" "" "ARCHIVES;DEFINITIONS;SYSTEM" ${ARGN})
    add_library(${name} INTERFACE IMPORTED)
    list(TRANSFORM arg_ARCHIVES PREPEND "${DEPENDENCIES}/lib/")
    target_include_directories(${name} SYSTEM INTERFACE ${DEPENDENCIES}/include)
    target_link_libraries(${name} INTERFACE ${arg_ARCHIVES} ${arg_SYSTEM})
    target_compile_definitions(${name} INTERFACE ${arg_DEFINITIONS})
endfunction()

imported_library(log4cxx
    ARCHIVES liblog4cxx.a libaprutil-1.a libexpat.a libapr-1.a
    DEFINITIONS LOG4CXX_STATIC
    SYSTEM ws2_32 mswsock rpcrt4 iphlpapi advapi32 shell32)
imported_library(tinyxml ARCHIVES libtinyxml.a DEFINITIONS TIXML_USE_STL)
imported_library(xmllite ARCHIVES libxmllite.a)
imported_library(benchmark ARCHIVES libbenchmark.a DEFINITIONS BENCHMARK_STATIC_DEFINE SYSTEM shlwapi)

# Header-only, from Debian; a folder of its own so that no header of the build machine slips in.
add_library(nlohmann_json INTERFACE IMPORTED)
target_include_directories(nlohmann_json SYSTEM INTERFACE ${DEPENDENCIES}/include)

set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
set(gtest_disable_pthreads OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
include(GoogleTest)
