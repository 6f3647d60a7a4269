# A desktop in memory: X server, bus, window manager, panel with the tray at its right end. Sourced by tour.sh.

screen_width=1280
screen_height=800

start_display() {
    local number_file=$session_folder/display
    Xvfb -displayfd 3 -screen 0 ${screen_width}x${screen_height}x24 -nolisten tcp -noreset 3>"$number_file" \
        >"$session_folder/xvfb.log" 2>&1 &
    session_processes+=($!)
    wait_until "the X server" test -s "$number_file"
    DISPLAY=:$(cat "$number_file")
    export DISPLAY
}

start_bus() {
    export XDG_RUNTIME_DIR=$session_folder/runtime
    mkdir -m 0700 "$XDG_RUNTIME_DIR"
    export DBUS_SESSION_BUS_ADDRESS=unix:path=$XDG_RUNTIME_DIR/bus
    # What the bus starts for the desktop finds the desktop's settings.
    XDG_CONFIG_HOME=$session_folder/desktop-config dbus-daemon --session --nofork \
        --address="$DBUS_SESSION_BUS_ADDRESS" >"$session_folder/bus.log" 2>&1 &
    session_processes+=($!)
    wait_until "the session bus" test -S "$XDG_RUNTIME_DIR/bus"
}

# The fonts of a modern desktop, whatever is set up on this machine.
choose_fonts() {
    cat >"$session_folder/fonts.conf" <<'END'
<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
  <include ignore_missing="yes">/etc/fonts/fonts.conf</include>
  <match target="pattern">
    <test name="family"><string>sans-serif</string></test>
    <edit name="family" mode="prepend" binding="strong"><string>Inter</string><string>Noto Sans</string></edit>
  </match>
  <match target="pattern">
    <test name="family"><string>Sans</string></test>
    <edit name="family" mode="prepend" binding="strong"><string>Inter</string><string>Noto Sans</string></edit>
  </match>
</fontconfig>
END
    export FONTCONFIG_FILE=$session_folder/fonts.conf
}

write_panel_settings() {
    local folder=$session_folder/desktop-config/xfce4/xfconf/xfce-perchannel-xml
    mkdir -p "$folder"
    cat >"$folder/xfce4-panel.xml" <<'END'
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="30"/>
      <property name="icon-size" type="uint" value="22"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/><value type="int" value="2"/><value type="int" value="3"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="clock">
      <property name="digital-layout" type="uint" value="3"/>
    </property>
    <property name="plugin-3" type="string" value="systray">
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
END
}

# in_desktop COMMAND...: with the desktop's own settings folder and the log of its own.
in_desktop() {
    XDG_CONFIG_HOME=$session_folder/desktop-config NO_AT_BRIDGE=1 LANG=C.UTF-8 \
        "$@" >"$session_folder/$1.log" 2>&1 &
    session_processes+=($!)
}

panel_is_there() {
    xdotool search --class xfce4-panel >/dev/null 2>&1 &&
        dbus-send --session --print-reply --dest=org.freedesktop.DBus /org/freedesktop/DBus \
            org.freedesktop.DBus.GetNameOwner string:org.kde.StatusNotifierWatcher >/dev/null 2>&1
}

start_desktop() {
    choose_fonts
    start_display
    start_bus
    write_panel_settings
    in_desktop xfwm4 --compositor=on
    wait_until "the window manager" xprop -root _NET_SUPPORTING_WM_CHECK
    hsetroot -solid '#4a6a8a' >/dev/null 2>&1
    in_desktop xfce4-panel --disable-wm-check
    wait_until "the panel" panel_is_there
}
