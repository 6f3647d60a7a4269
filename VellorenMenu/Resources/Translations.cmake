# The translations of the application's texts, compiled from translations/ when the build runs.
#
# velloren_compile_translations(<variable>)
#   Puts into <variable> the file velloren_LANGUAGE.qm of every translations/velloren_LANGUAGE.ts, each with its
#   bare name as resource alias: qt_add_resources(<target> translations PREFIX /i18n FILES ${<variable>}).

# Qt's own folder first: elsewhere the name may be another version's.
find_program(LRELEASE lrelease REQUIRED HINTS ${QT6_INSTALL_PREFIX}/${QT6_INSTALL_BINS} /usr/lib/qt6/bin
    DOC "Compiles translations (Debian: qt6-l10n-tools)")

function(velloren_compile_translations files)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/translations/velloren_*.ts)
    set(directory ${CMAKE_CURRENT_BINARY_DIR}/translations)
    file(MAKE_DIRECTORY ${directory})
    set(compiled)
    foreach(source IN LISTS sources)
        cmake_path(GET source STEM LAST_ONLY name)
        add_custom_command(
            OUTPUT ${directory}/${name}.qm
            COMMAND ${LRELEASE} -silent ${source} -qm ${directory}/${name}.qm
            DEPENDS ${source}
            COMMENT "Compiling ${name}.qm"
            VERBATIM)
        set_source_files_properties(${directory}/${name}.qm PROPERTIES QT_RESOURCE_ALIAS ${name}.qm)
        list(APPEND compiled ${directory}/${name}.qm)
    endforeach()
    set(${files} ${compiled} PARENT_SCOPE)
endfunction()
