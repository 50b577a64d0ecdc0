# One place for what every target of the project is compiled and linked with.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wconversion -Werror>
    # The same bytes from any folder, and log lines that name files as the project does.
    $<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=>)
target_compile_definitions(project_options INTERFACE
    UNICODE _UNICODE NOMINMAX _WIN32_WINNT=0x0601 WINVER=0x0601)
target_include_directories(project_options INTERFACE ${CMAKE_SOURCE_DIR}/source ${CMAKE_SOURCE_DIR})
# Static runtimes: the DLL must import nothing that Windows does not bring.
target_link_options(project_options INTERFACE -static -Wl,--no-insert-timestamp
    # Before the compiler's own libraries: here lies the winpthreads that can be told to end.
    -L${DEPENDENCIES}/lib)
set_property(TARGET project_options APPEND PROPERTY INTERFACE_LINK_DEPENDS ${DEPENDENCIES}/lib/libpthread.a)

if(CHECKED)
    target_compile_options(project_options INTERFACE
        $<$<COMPILE_LANGUAGE:CXX>:-fsanitize=undefined -fsanitize-undefined-trap-on-error>)
    target_compile_definitions(project_options INTERFACE _GLIBCXX_ASSERTIONS)
elseif(COVERAGE)
    target_compile_options(project_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:--coverage>)
    target_link_options(project_options INTERFACE --coverage)
else()
    target_compile_options(project_options INTERFACE
        $<$<COMPILE_LANGUAGE:CXX>:-fstack-protector-strong>)
    target_compile_definitions(project_options INTERFACE $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
    # When linking the option brings libssp, which holds the checked functions of both.
    target_link_options(project_options INTERFACE -fstack-protector-strong $<$<CONFIG:Release>:-s>)
endif()

# A static library from every source file of the folder.
function(project_library name)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    add_library(${name} STATIC ${sources})
    target_link_libraries(${name} PUBLIC project_options ${ARGN})
endfunction()

# What nearly every source of the add-in includes, read once: half of the time of a build.
set(common_headers ${CMAKE_SOURCE_DIR}/source/platform/Windows.h <comdef.h> <log4cxx/logger.h>
    <log4cxx/helpers/messagebuffer.h> <map> <memory> <sstream> <string> <vector>)

# Puts a program or a DLL of the checked build on the guard heap.
function(project_guard_heap name)
    if(CHECKED)
        target_sources(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/support/GuardHeap.cpp)
    endif()
endfunction()

# A GoogleTest program from every source file of the folder; CTest runs each test in a process of its own.
function(project_tests name)
    cmake_parse_arguments(arg "" "LOCK" "LIBRARIES" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE project_options test_main ${arg_LIBRARIES})
    project_guard_heap(${name})
    # A test runs once; what it tests is optimised as it is delivered.
    target_compile_options(${name} PRIVATE -O0)
    target_precompile_headers(${name} REUSE_FROM test_main)
    if(arg_LOCK)
        set(properties PROPERTIES RESOURCE_LOCK ${arg_LOCK})
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 300 ${properties})
endfunction()
