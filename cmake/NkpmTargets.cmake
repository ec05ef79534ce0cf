# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT

include(GenerateExportHeader)

# nkpm_add_platform_library(NAME ALIAS EXPORT_MACRO HEADERS ... SOURCES ... LINKS ...)
# One library of platform/: target NAME, alias Norvak::ALIAS, include root platform/, and an export
# header <NAME/NAME_export.h> that defines EXPORT_MACRO. HEADERS are the public ones, installed.
function(nkpm_add_platform_library name alias macro)
    cmake_parse_arguments(arg "" "" "HEADERS;SOURCES;LINKS" ${ARGN})
    add_library(${name} ${arg_SOURCES})
    add_library(Norvak::${alias} ALIAS ${name})
    string(TOLOWER ${name} lower)
    set(exportHeader ${CMAKE_CURRENT_BINARY_DIR}/include/${lower}/${lower}_export.h)
    generate_export_header(${name}
        BASE_NAME ${name} EXPORT_MACRO_NAME ${macro} EXPORT_FILE_NAME ${exportHeader})
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform>
        $<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}/include>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/norvakplatform>)
    target_link_libraries(${name} PUBLIC ${arg_LINKS})
    nkpm_compile_as_ours(${name})
    nkpm_follow_sources(${name})
    nkpm_static_define(${name})
    set_target_properties(${name} PROPERTIES
        EXPORT_NAME ${alias} VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    nkpm_install_library(${name})
    if(NKPM_INSTALL)
        install(FILES ${arg_HEADERS} ${exportHeader}
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/norvakplatform/${lower} COMPONENT development)
    endif()
endfunction()

# nkpm_compile_as_ours(TARGET): the settings of nkpm_compiler for a library that is exported. It isn't
# linked: a static library would hand it on to those who use the library. What its headers take, users
# get, whatever standard their project has.
function(nkpm_compile_as_ours target)
    target_compile_features(${target} PUBLIC cxx_std_17)
    target_compile_options(${target}
        PRIVATE $<TARGET_PROPERTY:nkpm_compiler,INTERFACE_COMPILE_OPTIONS>)
    target_compile_definitions(${target}
        PRIVATE $<TARGET_PROPERTY:nkpm_compiler,INTERFACE_COMPILE_DEFINITIONS>)
endfunction()

# nkpm_static_define(TARGET): a static build must not import symbols.
function(nkpm_static_define target)
    if(NOT BUILD_SHARED_LIBS)
        string(TOUPPER ${target} upper)
        target_compile_definitions(${target} PUBLIC ${upper}_STATIC_DEFINE)
    endif()
endfunction()

# nkpm_install_library(TARGET): installs TARGET as part of the exported set.
function(nkpm_install_library target)
    if(NOT NKPM_INSTALL)
        return()
    endif()
    install(TARGETS ${target} EXPORT NorvakPackageManagerTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
            NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endfunction()

# nkpm_install_tool(TARGET): installs a program with its man page and completions.
function(nkpm_install_tool target)
    if(NOT NKPM_INSTALL)
        return()
    endif()
    set(packaging ${PROJECT_SOURCE_DIR}/packaging)
    install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
    install(FILES ${packaging}/man/${target}.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
    install(FILES ${packaging}/completions/${target}.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${target}
        COMPONENT runtime)
    install(FILES ${packaging}/completions/_${target}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT runtime)
endfunction()

# nkpm_install_desktop_entry(TARGET ID): makes and installs what a desktop knows of a program.
function(nkpm_install_desktop_entry target id)
    set(desktop ${PROJECT_SOURCE_DIR}/packaging/desktop)
    configure_file(${desktop}/${id}.metainfo.xml.in ${PROJECT_BINARY_DIR}/${id}.metainfo.xml @ONLY)
    if(NOT NKPM_INSTALL)
        return()
    endif()
    install(FILES ${desktop}/${id}.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT runtime)
    install(FILES ${PROJECT_BINARY_DIR}/${id}.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT runtime)
    install(FILES ${desktop}/${target}.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT runtime)
endfunction()

# nkpm_follow_sources(TARGET): has moc look again when files were added to the target, from whatever
# folder. Otherwise moc looks again only when a file that it knows has changed, and a build in an
# existing tree lacks the new classes: so here is a file that names them all.
function(nkpm_follow_sources target)
    set(list ${CMAKE_CURRENT_BINARY_DIR}/${target}_sources.h)
    file(GENERATE OUTPUT ${list}
        CONTENT "// $<JOIN:$<TARGET_PROPERTY:${target},SOURCES>,\n// >\n")
    target_sources(${target} PRIVATE ${list})
endfunction()

# nkpm_precompile(TARGET): the library's precompiled header, where they are switched on.
function(nkpm_precompile target)
    if(NKPM_PCH)
        target_precompile_headers(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/pch.h)
    endif()
endfunction()

# nkpm_add_test(NAME [CONCURRENT] [SOURCES ...] [LINKS ...] [LABELS ...] [TIMEOUT seconds])
# A QtTest program from NAME.cpp (or SOURCES), linked with the library's objects and
# tests/support. CONCURRENT marks it for the ThreadSanitizer run too.
function(nkpm_add_test name)
    cmake_parse_arguments(arg "CONCURRENT" "TIMEOUT" "SOURCES;LINKS;LABELS" ${ARGN})
    if(NOT arg_SOURCES)
        set(arg_SOURCES ${name}.cpp)
    endif()
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE nkpm_testsupport ${arg_LINKS})
    if(NKPM_PCH)
        target_precompile_headers(${name} REUSE_FROM nkpm_testsupport)
    endif()
    if(arg_CONCURRENT)
        list(APPEND arg_LABELS concurrent)
        set_property(GLOBAL APPEND PROPERTY NKPM_CONCURRENT_TESTS ${name})
    endif()
    nkpm_register_test(${name} TIMEOUT "${arg_TIMEOUT}" LABELS "${arg_LABELS}")
endfunction()

# nkpm_register_test(NAME [LABELS ...] [TIMEOUT seconds])
# Has ctest run the program NAME: offscreen, with a locale, a time zone and a home of its own, so that
# no test depends on or touches the user's. (Without TZ the C library sets its zone up at each look,
# which ThreadSanitizer takes for a race where it can't name the function.) One test function may take as long as all of them.
function(nkpm_register_test name)
    cmake_parse_arguments(arg "" "TIMEOUT" "LABELS" ${ARGN})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)
    endif()
    math(EXPR milliseconds "${arg_TIMEOUT} * 1000")
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${arg_TIMEOUT}
        LABELS "${arg_LABELS}"
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QTEST_FUNCTION_TIMEOUT=${milliseconds};LC_ALL=C.UTF-8;TZ=UTC;HOME=${CMAKE_BINARY_DIR}/tests/home;TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/tsan.supp:halt_on_error=1;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/lsan.supp")
endfunction()
