# The pictures of the application, drawn from the SVG sources in images/ when the build runs.
#
# velloren_render_images(<variable>)
#   Puts into <variable> the PNG files of every picture: NAME.png, NAME@2x.png and NAME@3x.png, of the bar's icons also
#   NAME@16px.png and the like, for the sizes that bars show. The width and height of a source are the picture's size
#   in points; a source with a number at its end fills the same points, drawn on a grid of so many pixels. Each file
#   carries its bare name as resource alias, so that qt_add_resources(<target> images PREFIX /images
#   FILES ${<variable>}) makes it ":/images/NAME.png". Call both in the same directory.

find_program(RSVG_CONVERT rsvg-convert REQUIRED DOC "Draws the SVG sources (Debian: librsvg2-bin)")

# FILE is drawn from SOURCE.svg as the options say; with a STYLE, STYLE.css says what the source's currentColor is.
function(velloren_draw files file source style)
    set(sources ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/images)
    set(options ${ARGN})
    set(stylesheet)
    if(style)
        set(stylesheet ${sources}/${style}.css)
        list(APPEND options --stylesheet=${stylesheet})
    endif()
    set(directory ${CMAKE_CURRENT_BINARY_DIR}/images)
    file(MAKE_DIRECTORY ${directory})
    add_custom_command(
        OUTPUT ${directory}/${file}
        COMMAND ${RSVG_CONVERT} ${options} --output=${directory}/${file} ${sources}/${source}.svg
        DEPENDS ${sources}/${source}.svg ${stylesheet}
        COMMENT "Drawing ${file}"
        VERBATIM)
    set_source_files_properties(${directory}/${file} PROPERTIES QT_RESOURCE_ALIAS ${file})
    set(${files} ${${files}} ${directory}/${file} PARENT_SCOPE)
endfunction()

function(velloren_render_image files name source style)
    velloren_draw(${files} ${name}.png ${source} "${style}")
    velloren_draw(${files} ${name}@2x.png ${source} "${style}" --zoom=2)
    velloren_draw(${files} ${name}@3x.png ${source} "${style}" --zoom=3)
    set(${files} ${${files}} PARENT_SCOPE)
endfunction()

# From the drawing whose lines fall on whole pixels there.
function(velloren_render_icon_sides files name source style)
    foreach(side IN ITEMS 16 24 32 33 48 64)
        set(grid)
        foreach(candidate IN ITEMS 16 24 32)
            math(EXPR rest "${side} % ${candidate}")
            if(rest EQUAL 0)
                set(grid ${candidate})
            endif()
        endforeach()
        velloren_draw(${files} ${name}@${side}px.png ${source}${grid} "${style}" --width=${side} --height=${side})
    endforeach()
    set(${files} ${${files}} PARENT_SCOPE)
endfunction()

function(velloren_render_images files)
    set(rendered)
    foreach(colour IN ITEMS White Black)
        foreach(variant IN ITEMS Default InSync)
            set(icon menuIcon${colour}${variant})
            velloren_render_image(rendered ${icon} menuIcon${variant} menuIcon${colour})
            velloren_render_icon_sides(rendered ${icon} menuIcon${variant} menuIcon${colour})
        endforeach()
    endforeach()
    velloren_render_image(rendered actions actions "")
    velloren_render_image(rendered createMeeting createMeeting "")
    velloren_render_image(rendered sync sync "")
    velloren_render_image(rendered upToDate upToDate "")
    set(${files} ${rendered} PARENT_SCOPE)
endfunction()
