# How every target of this project is compiled. The arithmetic switches are part of the product: the decoder gives
# the same results natively and as a 32-bit Windows program only with SSE2 maths and without contraction.

add_library(orva_compile_options INTERFACE)
target_compile_features(orva_compile_options INTERFACE cxx_std_20)
target_include_directories(orva_compile_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(
    orva_compile_options
    INTERFACE -Wall -Wextra -Wconversion -Wshadow -Werror
              -msse2 -mfpmath=sse -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # clang has no other floating-point unit to choose from on x86-64.
    target_compile_options(orva_compile_options INTERFACE -Wno-unused-command-line-argument)
endif()

if(WIN32)
    target_compile_definitions(orva_compile_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
    # A Windows caller keeps the stack aligned to 4 bytes only.
    target_compile_options(orva_compile_options INTERFACE -mstackrealign)
    target_link_options(orva_compile_options INTERFACE -static -static-libgcc -static-libstdc++)
endif()

if(ORVA_SANITIZE)
    target_compile_options(
        orva_compile_options INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                       -fno-omit-frame-pointer)
    target_link_options(orva_compile_options INTERFACE -fsanitize=address,undefined)
endif()
if(ORVA_FUZZ)
    target_compile_options(orva_compile_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# orva_library(NAME SOURCES ... [LINK ...]): one room of the house as a static library.
function(orva_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC orva_compile_options ${ARG_LINK})
endfunction()

# What every test program shares of its compilation: the large headers are parsed once, and the checks themselves,
# unlike what they check, are not optimised for long. (So optimised, GCC 12 believes that texts overlap.)
set(orva_test_options $<$<CONFIG:Release>:-O1>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    list(APPEND orva_test_options $<$<CONFIG:Release>:-Wno-array-bounds> $<$<CONFIG:Release>:-Wno-stringop-overflow>)
endif()
if(ORVA_SANITIZE)
    # Checks of every pointer that a test itself uses would make up a third of the time it takes to compile.
    list(APPEND orva_test_options -fno-sanitize=null,alignment,object-size,vptr)
endif()

function(orva_test_headers)
    file(WRITE "${CMAKE_BINARY_DIR}/TestHeaders.cpp" "")
    add_library(orva_test_headers OBJECT "${CMAKE_BINARY_DIR}/TestHeaders.cpp")
    target_link_libraries(orva_test_headers PRIVATE orva_compile_options GTest::gtest_main)
    target_compile_options(orva_test_headers PRIVATE ${orva_test_options})
    target_precompile_headers(
        orva_test_headers PRIVATE <gtest/gtest.h> <algorithm> <array> <cmath> <cstdint> <cstring> <memory> <string>
        <vector>)
endfunction()

# orva_test(NAME [SHOWS_WINDOWS] SOURCES ... [LINK ...]): a GoogleTest program, one entry of ctest.
function(orva_test name)
    cmake_parse_arguments(ARG "SHOWS_WINDOWS" "" "SOURCES;LINK" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE orva_compile_options ${ARG_LINK} GTest::gtest_main)
    target_compile_options(${name} PRIVATE ${orva_test_options})
    target_precompile_headers(${name} REUSE_FROM orva_test_headers)
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
    if(ARG_SHOWS_WINDOWS)
        orva_tests_show_windows(${name})
    endif()
endfunction()

# Entries of ctest that need the display for themselves: there is one pointer and one focus. What shows no windows may
# run beside them.
function(orva_tests_show_windows)
    # They start first, since they have to follow one another.
    set_tests_properties(${ARGN} PROPERTIES RESOURCE_LOCK display COST 1000)
endfunction()
