# Debian packages, split as Debian does it: cpack -G DEB in the build directory. -DCMAKE_INSTALL_PREFIX=/usr gives the
# paths of Debian's own packages. Every install() belongs to one of the components below, "development" when it names
# none; tests/package/debian.cmake fails when a file of the installed tree is in no package.

# What Debian asks of every package: its changes, compressed so that two builds of one tree are the same.
set(NIVORA_PACKAGE_DATE "Sun, 22 Nov 2026 12:00:00 +0000")
find_program(NIVORA_GZIP gzip)
mark_as_advanced(NIVORA_GZIP)
set(debian_dir ${PROJECT_BINARY_DIR}/generated/debian)
file(WRITE ${debian_dir}/triggers "activate-noawait ldconfig\n")

# nivora_changelog(PACKAGE VARIABLE): writes the file, whose path the variable gets.
function(nivora_changelog package variable)
    set(text ${debian_dir}/${package}/changelog.Debian)
    file(WRITE ${text} "${package} (${version}) unstable; urgency=medium

  * See CHANGELOG.md of the package nivora-cs-doc for what changed.

 -- ${CPACK_PACKAGE_CONTACT}  ${NIVORA_PACKAGE_DATE}
")
    execute_process(COMMAND ${NIVORA_GZIP} -9nf ${text} COMMAND_ERROR_IS_FATAL ANY)
    set(${variable} ${text}.gz PARENT_SCOPE)
endfunction()

# nivora_package(COMPONENT PACKAGE DEPENDS text SECTION name [SHLIBS] [ALL] DESCRIPTION text)
# SHLIBS: has programs or libraries, whose needs dpkg-shlibdeps adds; ALL: the same on every architecture.
macro(nivora_package component package)
    cmake_parse_arguments(arg "SHLIBS;ALL" "DEPENDS;SECTION;DESCRIPTION" "" ${ARGN})
    string(TOUPPER ${component} upper)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${arg_SECTION})
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${arg_DEPENDS}")
    set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS ${arg_SHLIBS})
    if(arg_ALL)
        set(CPACK_DEBIAN_${upper}_PACKAGE_ARCHITECTURE all)
    endif()
    # CPack's first line is the project's; the text must not repeat it.
    string(REGEX REPLACE "^coordinate systems and transformations for desktop GIS\n *" "" text "${arg_DESCRIPTION}")
    set(CPACK_COMPONENT_${upper}_DESCRIPTION "${text}")
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
            RENAME copyright COMPONENT ${component})
    nivora_changelog(${package} changelog)
    install(FILES ${changelog} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
            RENAME changelog.Debian.gz COMPONENT ${component})
    if(${arg_SECTION} STREQUAL "libs")
        set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA ${debian_dir}/triggers)
    endif()
    install(FILES ${PROJECT_SOURCE_DIR}/NOTICE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
            COMPONENT ${component})
endmacro()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "the nivora-cs authors <nivora-cs@invalid.invalid>" CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The packages need each other: dpkg-shlibdeps finds the libraries where they were built.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

set(version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
set(CPACK_COMPONENTS_ALL "")
# PROJ without proj.db and the library without its catalogues can do nothing.
nivora_package(library libnivora-cs1 SHLIBS SECTION libs DEPENDS "nivora-cs-data (= ${version}), proj-data"
    DESCRIPTION "coordinate systems and transformations for desktop GIS\n The shared library.")
set(qt_development "qtbase5-dev (>= 5.15)")
if(NIVORA_QT EQUAL 6)
    set(qt_development "qt6-base-dev (>= 6.4)")
endif()
nivora_package(development libnivora-cs-dev SECTION libdevel
    DEPENDS "libnivora-cs1 (= ${version}), nivora-cs-data (= ${version}), ${qt_development}"
    DESCRIPTION "coordinate systems and transformations for desktop GIS\n Headers, CMake package and pkg-config file.")
nivora_package(data nivora-cs-data ALL SECTION science DEPENDS ""
    DESCRIPTION "catalogues of coordinate systems\n Named systems, datums, units, bounds and towns.")
if(TARGET nivora-cs-program)
    nivora_package(program nivora-cs SHLIBS SECTION science
        DEPENDS "libnivora-cs1 (= ${version}), nivora-cs-data (= ${version})"
        DESCRIPTION "coordinate systems and transformations on the command line\n The program nivora-cs.")
endif()
if(TARGET nivora-cs-widgets)
    nivora_package(widgets libnivora-cs-widgets1 SHLIBS SECTION libs DEPENDS "libnivora-cs1 (= ${version})"
        DESCRIPTION "widgets to choose a coordinate system\n The shared library of Qt widgets.")
    string(APPEND CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ", libnivora-cs-widgets1 (= ${version})")
endif()
if(TARGET nivora-cs-picker)
    nivora_package(picker nivora-cs-picker SHLIBS SECTION science
        DEPENDS "libnivora-cs-widgets1 (= ${version}), nivora-cs-data (= ${version})"
        DESCRIPTION "a window to choose a coordinate system\n The program nivora-cs-picker.")
endif()
if(TARGET nivora-cs-python)
    nivora_package(python python3-nivora-cs SHLIBS SECTION python
        DEPENDS "libnivora-cs1 (= ${version}), nivora-cs-data (= ${version}), python3 (>= 3.11), python3 (<< 3.12), python3-numpy"
        DESCRIPTION "coordinate systems and transformations from Python\n The module nivora_cs.")
endif()
nivora_package(doc nivora-cs-doc ALL SECTION doc DEPENDS ""
    DESCRIPTION "coordinate systems and transformations for desktop GIS\n Pages, examples and, when doxygen was there, the reference.")

install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/nivora-cs-doc COMPONENT doc)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc
        FILES_MATCHING PATTERN "*.md" PATTERN "*.png")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(DIRECTORY ${PROJECT_BINARY_DIR}/reference/html DESTINATION ${CMAKE_INSTALL_DOCDIR}/reference OPTIONAL
        COMPONENT doc)

include(CPack)
