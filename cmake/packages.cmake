# The Debian packages switchmib, switchmib-dev and switchmib-tools, by CPack; included before the targets.
# docs/packaging.md says how to make them.

# Where Debian puts things. A library that programs load and nobody links has a directory of its own.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpmachine OUTPUT_VARIABLE machine
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
foreach(variable DEB_HOST_ARCH DEB_HOST_MULTIARCH)
    execute_process(COMMAND dpkg-architecture -f -t ${machine} -q ${variable} OUTPUT_VARIABLE ${variable}
        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endforeach()
set(CMAKE_INSTALL_PREFIX /usr)
set(CMAKE_INSTALL_LIBDIR lib/${DEB_HOST_MULTIARCH})
set(SWITCHMIB_LIBRARY_DIR ${CMAKE_INSTALL_LIBDIR}/switchmib)
set(CMAKE_INSTALL_DOCDIR share/doc/switchmib-tools)
include(GNUInstallDirs)

# As Debian hardens its programs.
add_compile_options(-fstack-protector-strong -D_FORTIFY_SOURCE=2)
add_link_options(-Wl,-z,relro,-z,now)

# The changelog has the packages' date and maintainer; its newest entry must be this version's.
set(changelog ${PROJECT_SOURCE_DIR}/packaging/changelog)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${changelog})
foreach(field Version Maintainer Timestamp)
    execute_process(COMMAND dpkg-parsechangelog -l ${changelog} -S ${field} OUTPUT_VARIABLE ${field}
        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endforeach()
if(NOT Version STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "The project's version is ${PROJECT_VERSION}, but packaging/changelog begins with ${Version}.")
endif()

# The same bytes from any directory, also with ccache, which may name the sources relative to the build directory. CPack
# gives directories the modes that the umask leaves.
cmake_path(RELATIVE_PATH PROJECT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_BINARY_DIR} OUTPUT_VARIABLE sources_from_build)
add_compile_options(-ffile-prefix-map=${PROJECT_BINARY_DIR}=build -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
    -ffile-prefix-map=${sources_from_build}=.)
file(WRITE ${PROJECT_BINARY_DIR}/cpack-options.cmake
"if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    set(ENV{SOURCE_DATE_EPOCH} ${Timestamp})
endif()
execute_process(COMMAND sh -c umask OUTPUT_VARIABLE umask)
if(NOT umask MATCHES \"^0*22\n\")
    message(FATAL_ERROR \"The packages' directories need umask 022; it is \${umask}\")
endif()
set(ENV{DEB_HOST_ARCH} ${DEB_HOST_ARCH})
set(SHLIBDEPS_EXECUTABLE ${PROJECT_SOURCE_DIR}/cmake/shlibdeps.sh)
")
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/cpack-options.cmake)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VENDOR "")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${DEB_HOST_ARCH})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${Maintainer})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(CMAKE_CROSSCOMPILING)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_FIND_ROOT_PATH}/lib)
endif()
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(copyright ${PROJECT_SOURCE_DIR}/packaging/copyright)
execute_process(COMMAND gzip -9nc ${changelog} OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.gz
    COMMAND_ERROR_IS_FATAL ANY)
# A component's package: its name, section, dependencies, and description, which begins with one line that sums it up.
function(switchmib_package component name section depends description)
    string(TOUPPER ${component} upper)
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS ${depends} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_DESCRIPTION ${description} PARENT_SCOPE)
    install(FILES ${PROJECT_BINARY_DIR}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
        COMPONENT ${component})
    install(FILES ${copyright} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} RENAME copyright
        COMPONENT ${component})
endfunction()
set(CPACK_COMPONENTS_ALL "")
switchmib_package(library switchmib net ""
"${PROJECT_DESCRIPTION}
The SNMP agent of a managed Layer 2/3 Ethernet switch loads this library. It
turns reads into show requests to the switch's management backend and writes
into configuration lines.")
switchmib_package(development switchmib-dev libdevel "switchmib (= ${PROJECT_VERSION})"
"${PROJECT_DESCRIPTION} - development files
The headers, the CMake package and the pkg-config file with which an SNMP
agent is built that loads the library.")
if(SWITCHMIB_HOST)
    file(READ ${copyright} texts)
    file(READ ${copyright}-of-libraries text)
    set(copyright ${PROJECT_BINARY_DIR}/copyright-tools)
    file(WRITE ${copyright} "${texts}${text}")
    switchmib_package(tools switchmib-tools net "switchmib (= ${PROJECT_VERSION})"
"${PROJECT_DESCRIPTION} - reference host
The tool mibhost runs the library without the device: it serves a simulated
switch over SNMP, lists and walks the objects, and explains what a request
makes the library ask and send. With it come the texts of the private MIB
modules, for managers.")
    set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/postinst
        ${PROJECT_SOURCE_DIR}/packaging/prerm ${PROJECT_SOURCE_DIR}/packaging/postrm)
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/mibhost.service DESTINATION lib/systemd/system COMPONENT tools)
endif()
include(CPack)
