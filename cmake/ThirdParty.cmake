# Packages that tests and tools use; the product itself links none of them.

# GoogleTest is built from the sources that its package installs, so that it is compiled for the target at hand and
# with the sanitizers in force.
if(ORVA_TESTS AND NOT ORVA_FUZZ)
    set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
    set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
    set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
    add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
    if(WIN32)
        target_compile_options(gtest PRIVATE -mstackrealign)
    endif()
    if(ORVA_SANITIZE)
        target_compile_options(gtest PRIVATE -fsanitize=address,undefined)
    endif()
    if(NOT TARGET GTest::gtest_main)
        add_library(GTest::gtest_main ALIAS gtest_main)
    endif()
endif()

# The header-only packages serve every target, but the folder they are installed in also holds the native C library's
# headers, which a cross compiler must not see: give the compiler a folder with these two alone.
set(headerOnly "${CMAKE_BINARY_DIR}/header-only")
file(MAKE_DIRECTORY "${headerOnly}")
foreach(package CLI nlohmann)
    if(EXISTS "/usr/include/${package}")
        file(CREATE_LINK "/usr/include/${package}" "${headerOnly}/${package}" SYMBOLIC)
    endif()
endforeach()
add_library(orva_header_only INTERFACE)
target_include_directories(orva_header_only SYSTEM INTERFACE "${headerOnly}")
