# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# Compiler settings of the whole tree: standard, visibility, warnings, sanitizers, ccache, linker.
# Each setting applies only to this project, also when it is added to another with add_subdirectory,
# and that one's own don't apply here.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_UNITY_BUILD OFF) # names in anonymous namespaces are a file's own
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# Installed programs and libraries find each other wherever the tree is moved to; one for the system's
# own directories isn't moved, and is searched there anyway.
if(NOT CMAKE_INSTALL_FULL_LIBDIR IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
    set(NKPM_MOVABLE ON)
    set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR};$ORIGIN")
endif()

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

find_program(NKPM_CCACHE ccache)
if(NKPM_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # The sloppiness is what ccache asks for with precompiled headers.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${NKPM_CCACHE})
endif()

find_program(NKPM_LLD ld.lld)
if(NKPM_LLD AND NOT CMAKE_EXE_LINKER_FLAGS MATCHES "-fuse-ld")
    add_link_options(-fuse-ld=lld)
endif()

add_library(nkpm_compiler INTERFACE)
target_compile_options(nkpm_compiler INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow $<$<BOOL:${NKPM_WERROR}>:-Werror>
    # clang finds fault with the expansion of Qt's logging macros and with a property of ours named $.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments -Wno-dollar-in-identifier-extension>)
target_compile_definitions(nkpm_compiler INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH
    QT_DEPRECATED_WARNINGS QT_DISABLE_DEPRECATED_BEFORE=0x050f00)

if(NKPM_SANITIZE)
    add_compile_options(-fsanitize=${NKPM_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all -Og -g1)
    add_link_options(-fsanitize=${NKPM_SANITIZE})
endif()

if(NKPM_COVERAGE)
    # Threads that count at once without it make numbers that gcovr refuses to read.
    add_compile_options(--coverage -fprofile-update=atomic -O0 -g1)
    add_link_options(--coverage)
endif()
