# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# Targets for those who work on the library: format, tidy, clazy, docs, coverage. Each is there when
# its tool is.

set(ownFolders src platform publisher app qml)
string(JOIN "|" ownFolderPattern ${ownFolders})

# Every file of ours, as git knows them.
find_program(NKPM_CLANG_FORMAT clang-format)
if(NKPM_CLANG_FORMAT)
    add_custom_target(format
        COMMAND git ls-files -z "*.cpp" "*.h" | xargs -0 ${NKPM_CLANG_FORMAT} -i
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        COMMENT "Formatting the sources")
endif()

# These read what clang was to compile, so they need a tree that clang configured (preset tidy), and
# in it the headers that are generated; nothing is compiled.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    find_program(NKPM_RUN_CLANG_TIDY NAMES run-clang-tidy run-clang-tidy-14)
    if(NKPM_RUN_CLANG_TIDY)
        add_custom_target(tidy
            COMMAND ${NKPM_RUN_CLANG_TIDY} -quiet -p ${PROJECT_BINARY_DIR}
                "^${PROJECT_SOURCE_DIR}/(${ownFolderPattern})/.*\\.cpp$$"
            COMMENT "Checking with clang-tidy" VERBATIM)
    endif()
    find_program(NKPM_CLAZY clazy-standalone)
    if(NKPM_CLAZY)
        add_custom_target(clazy
            COMMAND ${PROJECT_SOURCE_DIR}/scripts/clazy.sh ${NKPM_CLAZY} ${PROJECT_BINARY_DIR}
                ${ownFolders}
            WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
            COMMENT "Checking with clazy" VERBATIM)
    endif()
endif()

get_directory_property(NKPM_DOXYGEN_INPUT DIRECTORY src DEFINITION NKPM_PUBLIC_HEADERS)
list(TRANSFORM NKPM_DOXYGEN_INPUT PREPEND ${PROJECT_SOURCE_DIR}/src/)
list(JOIN NKPM_DOXYGEN_INPUT " \\\n    " NKPM_DOXYGEN_INPUT)
configure_file(docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
find_program(NKPM_DOXYGEN doxygen)
if(NKPM_DOXYGEN)
    add_custom_target(docs
        COMMAND ${NKPM_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        COMMENT "Reading the public headers: ${PROJECT_BINARY_DIR}/docs/html/index.html")
endif()

find_program(NKPM_GCOVR gcovr)
if(NKPM_COVERAGE AND NKPM_GCOVR)
    list(TRANSFORM ownFolders PREPEND --filter= OUTPUT_VARIABLE filters)
    list(TRANSFORM filters APPEND /)
    add_custom_target(coverage
        COMMAND ${NKPM_GCOVR} --root ${PROJECT_SOURCE_DIR} ${filters} --exclude-throw-branches
            --print-summary --html-details ${PROJECT_BINARY_DIR}/coverage/index.html
            ${PROJECT_BINARY_DIR}
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        COMMENT "What the tests that ran in this tree have reached" VERBATIM)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/coverage)
endif()
