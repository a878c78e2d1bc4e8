# Debian packages of the build machine's architecture (`make deb`): the
# runtime (the library and the host port), the development files (headers,
# CMake package, pkg-config file) and the tools (quilctl, quil-cloud). The
# version is the project's; the runtime package is named after the SONAME.

set(runtime_package libvelmar-quil${VELMAR_SOVERSION})
set(docs_of_runtime ${CMAKE_INSTALL_DATADIR}/doc/${runtime_package})
set(docs_of_dev ${CMAKE_INSTALL_DATADIR}/doc/libvelmar-quil-dev)
set(docs_of_tools ${CMAKE_INSTALL_DATADIR}/doc/velmar-quil-tools)

# Every Debian package carries its copyright and a changelog.
string(TIMESTAMP changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component runtime dev tools)
    set(changelog ${PROJECT_BINARY_DIR}/packaging/${component}/changelog)
    file(WRITE ${changelog} "velmar-quil (${PROJECT_VERSION}) unstable; urgency=medium\n\n"
                            "  * Release ${PROJECT_VERSION}.\n\n"
                            " -- Velmar firmware team <firmware@velmar.test>  ${changelog_date}\n")
    execute_process(COMMAND gzip -9nf ${changelog})
    install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright ${changelog}.gz
            DESTINATION ${docs_of_${component}} COMPONENT ${component})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velmar-quil)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR Velmar)
set(CPACK_PACKAGE_CONTACT "Velmar firmware team <firmware@velmar.test>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Dependencies on the libraries each package links, as dpkg-shlibdeps finds them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The tools link this build's own libraries, which the runtime package carries.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/platform/host)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The loader cache is updated by dpkg's ldconfig trigger; maintainer scripts
# of our own stand in for the ones that would call ldconfig directly.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers
    ${PROJECT_SOURCE_DIR}/packaging/postinst ${PROJECT_SOURCE_DIR}/packaging/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "device-to-cloud client library of the speaker\n The library the speaker's daemons reach the cloud through, with its Linux port.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libvelmar-quil-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "${runtime_package} (= ${PROJECT_VERSION}), libjson-c-dev, pkgconf | pkg-config")
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "device-to-cloud client library of the speaker (development files)\n Headers, CMake package and pkg-config file.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME velmar-quil-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION net)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "command-line client and local cloud of the speaker's library\n quilctl calls every exported function; quil-cloud serves the cloud on loopback.")

include(CPack)
