# Texts of a target in another language: translations/NAME.ts is compiled into the target, as
# ":/translations/NAME.qm", and installed in both forms.
#
# The target "update-translations" brings the .ts files to the state of the sources.

get_target_property(NIVORA_QMAKE Qt${NIVORA_QT}::qmake IMPORTED_LOCATION)
get_filename_component(NIVORA_QT_BIN ${NIVORA_QMAKE} DIRECTORY)
find_program(NIVORA_LRELEASE lrelease HINTS ${NIVORA_QT_BIN} /usr/lib/qt${NIVORA_QT}/bin REQUIRED)
find_program(NIVORA_LUPDATE lupdate HINTS ${NIVORA_QT_BIN} /usr/lib/qt${NIVORA_QT}/bin REQUIRED)
mark_as_advanced(NIVORA_LRELEASE NIVORA_LUPDATE)

function(nivora_add_translation target name)
    set(directory ${PROJECT_BINARY_DIR}/generated/translations)
    set(ts ${PROJECT_SOURCE_DIR}/translations/${name}.ts)
    set(qm ${directory}/${name}.qm)
    file(MAKE_DIRECTORY ${directory})
    add_custom_command(OUTPUT ${qm}
        COMMAND ${NIVORA_LRELEASE} -silent ${ts} -qm ${qm}
        DEPENDS ${ts} VERBATIM)
    file(CONFIGURE OUTPUT ${directory}/${name}.qrc CONTENT
"<RCC><qresource prefix=\"/translations\"><file>@name@.qm</file></qresource></RCC>\n" @ONLY)
    nivora_add_resources(sources ${directory}/${name}.qrc)
    set_source_files_properties(${sources} PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
    target_sources(${target} PRIVATE ${sources})
    install(FILES ${ts} ${qm} DESTINATION ${CMAKE_INSTALL_DATADIR}/nivora-cs/translations COMPONENT data)
endfunction()

add_custom_target(update-translations
    COMMAND ${NIVORA_LUPDATE} -silent -no-obsolete -locations none coordsys -ts translations/nivora-cs_en.ts
    COMMAND ${NIVORA_LUPDATE} -silent -no-obsolete -locations none widgets -ts translations/nivora-cs-widgets_en.ts
    COMMAND ${NIVORA_LUPDATE} -silent -no-obsolete -locations none apps -ts translations/nivora-cs-program_ru.ts
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} VERBATIM)
