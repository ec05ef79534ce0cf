# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# The public key that signs the issuers of the ledgers a build accepts is part of the build.

set(NKPM_DEVELOPMENT_TRUST_KEY ${PROJECT_SOURCE_DIR}/keys/development-trust.pem)
set(NKPM_TRUST_KEY ${NKPM_DEVELOPMENT_TRUST_KEY} CACHE FILEPATH
    "PEM file of the Ed25519 public key whose issuers the library trusts")

# nkpm_generate_trust_key(OUTPUT): writes the source file with the key's text.
function(nkpm_generate_trust_key output)
    get_filename_component(keyFile ${NKPM_TRUST_KEY} ABSOLUTE BASE_DIR ${PROJECT_SOURCE_DIR})
    if(NOT EXISTS ${keyFile})
        message(FATAL_ERROR "NKPM_TRUST_KEY: there is no file ${keyFile}")
    endif()
    file(READ ${keyFile} text)
    string(REPLACE "\r\n" "\n" text "${text}")
    string(STRIP "${text}" text)
    # 60 characters are the 44 bytes of such a key; those of its algorithm are the first 16.
    if(NOT text MATCHES "^-----BEGIN PUBLIC KEY-----\nMCowBQYDK2VwAyEA[A-Za-z0-9+/]+=\n-----END PUBLIC KEY-----$")
        message(FATAL_ERROR "NKPM_TRUST_KEY: ${keyFile} is not the PEM file of an Ed25519 public key")
    endif()
    file(READ ${NKPM_DEVELOPMENT_TRUST_KEY} developmentText)
    string(STRIP "${developmentText}" developmentText)
    set(NKPM_TRUSTS_DEVELOPMENT_KEY false)
    if(text STREQUAL developmentText)
        set(NKPM_TRUSTS_DEVELOPMENT_KEY true)
    endif()
    # Kept for ./run and ./test too, which show it after each build.
    set(warningFile ${PROJECT_BINARY_DIR}/trust-key-warning.txt)
    file(REMOVE ${warningFile})
    if(NKPM_TRUSTS_DEVELOPMENT_KEY AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
        set(warning
            "This ${CMAKE_BUILD_TYPE} build trusts the DEVELOPMENT KEY, whose private half is public: "
            "anybody can sign a catalogue that it accepts. Set NKPM_TRUST_KEY to a key of your own "
            "before you give it to users (keys/README.md).")
        list(JOIN warning "" warning)
        file(WRITE ${warningFile} "${warning}\n")
        message(WARNING "${warning}")
    endif()
    set(NKPM_TRUST_KEY_TEXT "${text}\n")
    configure_file(${PROJECT_SOURCE_DIR}/src/sources/trustkey.cpp.in ${output} @ONLY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${keyFile})
endfunction()
