# Debian packages: `tools/make-packages`. Only the preset `package` asks for them: its prefix is /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME marovine)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "libMarovine developers <maintainers@marovine.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# A component as a package of its own; further arguments are packages that it needs beside those of its libraries.
function(marovine_package component package section summary description)
    string(TOUPPER ${component} key)
    list(JOIN ARGN ", " needs)
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_SHLIBDEPS ON PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${needs}" PARENT_SCOPE)
    set(CPACK_COMPONENT_${key}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)

    # What Debian asks of every package.
    set(folder ${CMAKE_BINARY_DIR}/debian/${package})
    configure_file(cmake/debian/changelog.in ${folder}/changelog @ONLY)
    execute_process(COMMAND gzip -9nc ${folder}/changelog OUTPUT_FILE ${folder}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
    install(FILES cmake/debian/copyright ${folder}/changelog.gz DESTINATION share/doc/${package}
            COMPONENT ${component})
endfunction()

marovine_package(runtime marovine science "acquisition applet with a virtual board"
    "The applet drives a frame grabber with a colour line-scan camera; the virtual\nboard stands in for it and takes pictures of a moving belt. The command\nmarovine sets, explains and grabs.")
marovine_package(producer marovine-gentl science "acquisition applet as a GenTL producer"
    "Programs that speak GenICam find, configure and stream from the virtual board\nthrough it." "marovine (= ${PROJECT_VERSION})")
marovine_package(development libmarovine-dev libdevel "acquisition applet with a virtual board (development)"
    "Headers of the applet and its board for C and C++, the C++ client, files for\nCMake and pkg-config, and examples."
    "marovine (= ${PROJECT_VERSION})" "libpng-dev" "libisal-dev" "libhwy-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
# Its extension is for one version of the interpreter.
find_package(Python REQUIRED COMPONENTS Interpreter)
math(EXPR next_python "${Python_VERSION_MINOR} + 1")
marovine_package(python python3-marovine python "acquisition applet with a virtual board (Python 3)"
    "Parameters as attributes, pictures as NumPy arrays, refusals that say why,\nand the board with its belt, faults and events."
    "marovine (= ${PROJECT_VERSION})" "python3 (>= 3.${Python_VERSION_MINOR})" "python3 (<< 3.${next_python})" python3-numpy)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/cmake/debian/python/postinst
                                              ${CMAKE_SOURCE_DIR}/cmake/debian/python/prerm)
# The one library that programs link lies where the loader looks.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/cmake/debian/triggers)
include(CPack)
