# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# What cmake --install lays down beside the targets: package files for CMake and pkg-config.
# Everything is relative to the prefix, so that the tree can be moved.

include(CMakePackageConfigHelpers)

set(NKPM_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/NorvakPackageManager)

install(EXPORT NorvakPackageManagerTargets
    NAMESPACE Norvak:: DESTINATION ${NKPM_CMAKE_DIR} COMPONENT development)
export(EXPORT NorvakPackageManagerTargets
    NAMESPACE Norvak:: FILE ${PROJECT_BINARY_DIR}/NorvakPackageManagerTargets.cmake)

configure_package_config_file(cmake/NorvakPackageManagerConfig.cmake.in
    ${PROJECT_BINARY_DIR}/NorvakPackageManagerConfig.cmake
    INSTALL_DESTINATION ${NKPM_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/NorvakPackageManagerConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/NorvakPackageManagerConfig.cmake
    ${PROJECT_BINARY_DIR}/NorvakPackageManagerConfigVersion.cmake
    DESTINATION ${NKPM_CMAKE_DIR} COMPONENT development)

if(NKPM_PLATFORM STREQUAL "bundled")
    file(RELATIVE_PATH NKPM_PC_PREFIX
        ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    configure_file(cmake/NorvakPackageManager.pc.in
        ${PROJECT_BINARY_DIR}/NorvakPackageManager.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/NorvakPackageManager.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endif()
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development OPTIONAL)
