# The compiler, its warnings and its hardening: the same for every target.

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    message(FATAL_ERROR
        "GCC ${CMAKE_CXX_COMPILER_VERSION} miscompiles coroutines (temporaries in the arguments of an "
        "awaited call are destroyed twice). Use clang 19 (CXX=clang++-19) or GCC 13 or later.")
endif()

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

find_program(CCACHE ccache)
if(CCACHE)
    # Precompiled headers carry macros and time stamps that ccache otherwise takes for a change.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        "${CMAKE_COMMAND};-E;env;CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime;${CCACHE}")
endif()

find_program(LLD ld.lld-19)
if(LLD AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_link_options(-fuse-ld=lld)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:SHELL:-Xclang -fno-pch-timestamp>")
endif()

# An interface target rather than global options, so that generated code can be spared.
add_library(zelvane_warnings INTERFACE)
target_compile_options(zelvane_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(ZELVANE_WERROR)
    target_compile_options(zelvane_warnings INTERFACE -Werror)
endif()

add_compile_definitions(QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS QT_NO_FOREACH)

if(ZELVANE_SANITIZE)
    add_compile_options(-fsanitize=${ZELVANE_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ZELVANE_SANITIZE})
endif()

if(CMAKE_BUILD_TYPE STREQUAL "Release")
    add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -D_GLIBCXX_ASSERTIONS
                        -fstack-protector-strong -fstack-clash-protection)
    if(NOT APPLE)
        add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack -Wl,--as-needed)
    endif()
endif()

if(ZELVANE_FUZZ)
    # The fuzzer finds its way by the branches of the code that it tests, so that is instrumented too.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
