# Compiler settings that every target shares.

set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

# The sanitizers' checks hide from gcc's -Wconversion that a value fits.
add_library(orblink_warnings INTERFACE)
target_compile_options(orblink_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow
    $<$<NOT:$<AND:$<BOOL:${ORBLINK_SANITIZE}>,$<CXX_COMPILER_ID:GNU>>>:-Wconversion>
    -Wno-sign-conversion -Werror
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor>)

# Hardening of everything but the tests, libraries with options of their own included.
# Indirect-branch tracking exists for 64-bit programs only. No fortified calls: see
# orblink_plain_library.
include(CheckPIESupported)
check_pie_supported()
foreach(language C CXX)
    set(orblink_${language}_flags_unhardened "${CMAKE_${language}_FLAGS}")
    if(NOT ORBLINK_HARDENING)
        continue()
    endif()
    string(APPEND CMAKE_${language}_FLAGS " -fstack-protector-strong")
    if(NOT ORBLINK_I386)
        string(APPEND CMAKE_${language}_FLAGS " -fcf-protection")
    endif()
endforeach()
if(ORBLINK_HARDENING)
    set(orblink_link_hardening " -Wl,-z,relro -Wl,-z,now")
else()
    set(orblink_link_hardening " -Wl,-z,norelro -Wl,-z,lazy")
endif()
foreach(kind EXE SHARED MODULE)
    string(APPEND CMAKE_${kind}_LINKER_FLAGS "${orblink_link_hardening}")
endforeach()

if(ORBLINK_I386)
    add_compile_options(-m32)
    add_link_options(-m32)
endif()
if(ORBLINK_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
    # A fifth of a program's start would be moving the sanitizers' tables to where it is loaded.
    add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
endif()
if(ORBLINK_RACES)
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
endif()

# A precompiled header stays good when its sources are checked out anew: ccache may hand it out.
add_compile_options("$<$<COMPILE_LANG_AND_ID:CXX,Clang>:SHELL:-Xclang -fno-pch-timestamp>")

# The big headers of the programs, compiled once for all their libraries. The sources of a program itself
# are compiled with other flags.
set(orblink_big_headers <nlohmann/json.hpp>
    <algorithm> <functional> <map> <optional> <sstream> <string> <vector>)
function(orblink_precompile_big_headers target)
    get_target_property(kind ${target} TYPE)
    if(kind STREQUAL EXECUTABLE)
        target_precompile_headers(${target} PRIVATE ${orblink_big_headers})
        return()
    endif()
    if(NOT TARGET big_headers)
        file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/big_headers.cpp CONTENT "")
        add_library(big_headers OBJECT ${CMAKE_BINARY_DIR}/big_headers.cpp)
        target_link_libraries(big_headers PRIVATE orblink_warnings)
        target_precompile_headers(big_headers PRIVATE ${orblink_big_headers})
        orblink_compile_together(big_headers)
    endif()
    target_precompile_headers(${target} REUSE_FROM big_headers)
endfunction()

# Nearly all of a compiler's time goes into headers. A whole build reads them once for a dozen
# sources; a build that somebody works in compiles file by file. Below half a gigabyte gcc then does not
# look for memory that it needs no longer, which took a quarter of its time.
set(CMAKE_UNITY_BUILD_BATCH_SIZE 12)
if(ORBLINK_UNITY)
    add_compile_options("$<$<COMPILE_LANG_AND_ID:CXX,GNU>:SHELL:--param ggc-min-heapsize=524288>")
endif()
function(orblink_compile_together target)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${ORBLINK_UNITY})
    if(ORBLINK_QUICK)
        target_compile_options(${target} PRIVATE -O0)
    endif()
endfunction()

# For what a folder adds from here on: clang needs half of gcc's time. Programs of the other ABI are
# there to be met; gcc compiles those of the machine's own.
macro(orblink_compile_quickly)
    if(ORBLINK_QUICK AND ORBLINK_I386 AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        find_program(orblink_clang clang++ REQUIRED)
        set(CMAKE_CXX_COMPILER ${orblink_clang})
        set(CMAKE_CXX_COMPILER_ID Clang)
        set(CMAKE_CXX_COMPILER_FRONTEND_VARIANT GNU)
        include(Compiler/Clang-CXX)
    endif()
endmacro()

if(ORBLINK_FUZZ)
    add_compile_options(-O1 -fsanitize=fuzzer-no-link)
endif()

# What each call goes through is built for speed; it is little. Without the gaps that go with it, and
# without a stack protector: what it would guard is one integer that the C library writes.
set(orblink_call_path_options
    "$<$<CONFIG:Release>:-O2;-fno-align-functions;-fno-align-jumps;-fno-align-loops;-fno-stack-protector>")

# gcc has -Oz since version 12.
set(orblink_plain_optimising $<IF:$<BOOL:${ORBLINK_I386}>,-Oz,-O2>)
if(ORBLINK_I386 AND CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
    set(orblink_plain_optimising -Os)
endif()

# A shared library that needs nothing but the C library at run time and exports what its map names.
# No fortified or folded calls: the platform functions are called by their own names, so that a
# program or a preloaded library that defines the same name takes them over. Small on i386: what it
# is made of is mapped into each process that calls. No unwind tables: an exception cannot pass
# through it with a lock held, but ends the program; debuggers read .debug_frame. No start-up files:
# nothing to start.
function(orblink_plain_library target map)
    target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/orblink>)
    target_link_libraries(${target} PRIVATE orblink_warnings)
    target_compile_options(${target} PRIVATE -U_FORTIFY_SOURCE -fno-builtin -fvisibility=hidden -fno-plt
        -fsemantic-interposition $<$<CONFIG:Release>:${orblink_plain_optimising}>
        $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>)
    target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
    if(ORBLINK_COVERAGE)
        target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
        target_link_options(${target} PRIVATE --coverage)
    endif()
    # What the C library took in with version 2.34: dlopen, shm_open and threads were in libraries of
    # their own before. Newer ones have nothing in them, and what is not needed is not named.
    target_link_libraries(${target} PRIVATE
        -Wl,--push-state,--as-needed -ldl -lrt -lpthread -Wl,--pop-state)
    if(ORBLINK_SANITIZE)
        target_compile_options(${target} PRIVATE -fno-sanitize=vptr)
    elseif(NOT ORBLINK_COVERAGE AND NOT ORBLINK_RACES)
        target_compile_options(${target} PRIVATE
            -fno-asynchronous-unwind-tables -fno-unwind-tables)
        target_link_options(${target} PRIVATE -nostartfiles -nodefaultlibs LINKER:-z,defs
            -fno-asynchronous-unwind-tables -fno-unwind-tables LINKER:--no-ld-generated-unwind-info)
        target_link_libraries(${target} PRIVATE c gcc)
        if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
            set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE ON)
        endif()
    endif()
endfunction()
