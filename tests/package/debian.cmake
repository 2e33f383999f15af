# Included by consumer.cmake: makes the Debian packages and installs them into an empty root, ${prefix} in it.
# No file may be missing from the packages or lie in two (dpkg refuses that), and no file may name the build machine.
set(debs ${WORK_DIR}/debs)
set(root "${WORK_DIR}/clean root")
set(prefix "${root}/usr")

if(QT EQUAL 5)
    set(qt_core libqt5core5a)
    set(qt_widgets libqt5widgets5)
    set(qt_development qtbase5-dev)
else()
    set(qt_core libqt6core6)
    set(qt_widgets libqt6widgets6)
    set(qt_development qt6-base-dev)
endif()

# depends(PACKAGE NAME…): the package asks for each of these, each found by dpkg-shlibdeps or written down.
function(depends package)
    file(GLOB deb ${debs}/${package}_*.deb)
    execute_process(COMMAND dpkg-deb --field ${deb} Depends OUTPUT_VARIABLE field COMMAND_ERROR_IS_FATAL ANY)
    foreach(wanted IN LISTS ARGN)
        if(NOT field MATCHES "(^|, )${wanted} ")
            message(FATAL_ERROR "${package} does not depend on ${wanted}: ${field}")
        endif()
    endforeach()
endfunction()

# files(DIR VARIABLE): what was installed, relative, without Debian's own record of it.
function(files dir variable)
    file(GLOB_RECURSE found RELATIVE ${dir} ${dir}/*)
    set(${variable} ${found} PARENT_SCOPE)
endfunction()

run(${CPACK} -G DEB -B ${debs} --config ${BUILD_DIR}/CPackConfig.cmake)
file(REMOVE_RECURSE ${debs}/_CPack_Packages)
depends(libnivora-cs1 ${qt_core} libproj[0-9]+ libgdal[0-9]+ libstdc\\+\\+6 nivora-cs-data)
depends(libnivora-cs-dev libnivora-cs1 ${qt_development})
if(APPS)
    depends(nivora-cs libnivora-cs1 ${qt_core} nivora-cs-data)
endif()
if(WIDGETS)
    depends(libnivora-cs-widgets1 libnivora-cs1 ${qt_widgets})
    depends(libnivora-cs-dev libnivora-cs-widgets1)
endif()
if(APPS AND WIDGETS)
    depends(nivora-cs-picker libnivora-cs-widgets1 ${qt_widgets} nivora-cs-data)
endif()

file(MAKE_DIRECTORY "${root}/var/lib/dpkg/info" "${root}/var/lib/dpkg/updates")
file(TOUCH "${root}/var/lib/dpkg/status" "${root}/var/lib/dpkg/available" "${root}/dpkg.log")
file(GLOB packages ${debs}/*.deb)
# The root holds nothing of Debian: what the packages depend on is not there, nor a shell for ldconfig after it.
run(dpkg "--root=${root}" "--log=${root}/dpkg.log" --force-not-root --force-bad-path --force-depends
    --unpack ${packages})

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/whole)
files(${WORK_DIR}/whole whole)
files(${prefix} packaged)
list(REMOVE_ITEM whole ${packaged})
if(whole)
    message(FATAL_ERROR "in no package: ${whole}")
endif()

execute_process(COMMAND grep --recursive --files-with-matches --fixed-strings -e ${SOURCE_DIR} -e ${BUILD_DIR} ${prefix}
    OUTPUT_VARIABLE telling)
if(telling)
    message(FATAL_ERROR "these files name the machine they were built on:\n${telling}")
endif()
