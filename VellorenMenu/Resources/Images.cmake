# The pictures of the application, drawn from the SVG sources in images/ when the build runs.
#
# velloren_render_images(<variable>)
#   Puts into <variable> the PNG files of every picture: NAME.png, NAME@2x.png and NAME@3x.png. The width and height
#   of a source are the picture's size in points. Each file carries its bare name as resource alias, so that
#   qt_add_resources(<target> images PREFIX /images FILES ${<variable>}) makes it ":/images/NAME.png". Call both in
#   the same directory.

find_program(RSVG_CONVERT rsvg-convert REQUIRED DOC "Draws the SVG sources (Debian: librsvg2-bin)")

# NAME is drawn from SOURCE.svg; with a STYLE, STYLE.css says what the source's currentColor is.
function(velloren_render_image files name source style)
    set(sources ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/images)
    set(svg ${sources}/${source}.svg)
    set(stylesheet)
    set(stylesheetOption)
    if(style)
        set(stylesheet ${sources}/${style}.css)
        set(stylesheetOption --stylesheet=${stylesheet})
    endif()

    set(directory ${CMAKE_CURRENT_BINARY_DIR}/images)
    file(MAKE_DIRECTORY ${directory})
    foreach(scale IN ITEMS 1 2 3)
        set(file ${name}@${scale}x.png)
        if(scale EQUAL 1)
            set(file ${name}.png)
        endif()
        add_custom_command(
            OUTPUT ${directory}/${file}
            COMMAND ${RSVG_CONVERT} --zoom=${scale} ${stylesheetOption} --output=${directory}/${file} ${svg}
            DEPENDS ${svg} ${stylesheet}
            COMMENT "Drawing ${file}"
            VERBATIM)
        set_source_files_properties(${directory}/${file} PROPERTIES QT_RESOURCE_ALIAS ${file})
        list(APPEND ${files} ${directory}/${file})
    endforeach()
    set(${files} ${${files}} PARENT_SCOPE)
endfunction()

function(velloren_render_images files)
    set(rendered)
    foreach(colour IN ITEMS White Black)
        foreach(variant IN ITEMS Default InSync)
            velloren_render_image(rendered menuIcon${colour}${variant} menuIcon${variant} menuIcon${colour})
        endforeach()
    endforeach()
    velloren_render_image(rendered actions actions "")
    velloren_render_image(rendered createMeeting createMeeting "")
    velloren_render_image(rendered sync sync "")
    velloren_render_image(rendered upToDate upToDate "")
    set(${files} ${rendered} PARENT_SCOPE)
endfunction()
