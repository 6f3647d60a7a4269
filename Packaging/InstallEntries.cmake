# Runs at install time, when the prefix is known: writes the desktop and D-Bus entries of `installedComponent`,
# which name the programs by their whole paths. Expects sources, installedComponent, binDir, libexecDir, dataDir
# and projectVersion.

set(VELLOREN_BIN ${CMAKE_INSTALL_PREFIX}/${binDir})
set(VELLOREN_LIBEXEC ${CMAKE_INSTALL_PREFIX}/${libexecDir}/velloren)
set(PROJECT_VERSION ${projectVersion})
set(data ${CMAKE_INSTALL_PREFIX}/${dataDir})
set(menuId com.velloren.velloren-mac.menu)

# Sessions look for autostart entries in /etc/xdg, also for what is in /usr/local.
set(autostart ${CMAKE_INSTALL_PREFIX}/etc/xdg/autostart)
if(CMAKE_INSTALL_PREFIX MATCHES "^/usr(/local)?/?$")
    set(autostart /etc/xdg/autostart)
endif()

# write_entry(<source> <file>): the source with its variables filled in
function(write_entry source file)
    message(STATUS "Installing: $ENV{DESTDIR}${file}")
    configure_file(${sources}/${source} $ENV{DESTDIR}${file} @ONLY)
    set(CMAKE_INSTALL_MANIFEST_FILES ${CMAKE_INSTALL_MANIFEST_FILES} ${file} PARENT_SCOPE)
endfunction()

# User managers look there, also for what is in /usr/local.
set(userUnits ${CMAKE_INSTALL_PREFIX}/lib/systemd/user)

macro(write_service name command)
    set(SERVICE_NAME ${name})
    set(SERVICE_COMMAND ${command})
    write_entry(service.in ${data}/dbus-1/services/${name}.service)
endmacro()

if(installedComponent STREQUAL "menu")
    write_entry(${menuId}.desktop.in ${data}/applications/${menuId}.desktop)
    write_entry(autostart.desktop.in ${autostart}/${menuId}.desktop)
    write_entry(velloren-menu.service.in ${userUnits}/velloren-menu.service)
    write_entry(${menuId}.metainfo.xml.in ${data}/metainfo/${menuId}.metainfo.xml)
    write_service(${menuId} ${VELLOREN_BIN}/velloren-menu)
    write_service(com.velloren.velloren-mac.agent ${VELLOREN_LIBEXEC}/velloren-agent)
else()
    write_entry(com.velloren.velloren-mac.desktop.in ${data}/applications/com.velloren.velloren-mac.desktop)
    write_service(com.velloren.velloren-mac ${VELLOREN_BIN}/velloren-main)
endif()
