# A session for showing the agent: a folder of its own for all that the product's processes read and write, and
# D-Bus service files through which the bus starts them there. Sourced by run.

binaries=$PWD/build/bin
product_names=(com.velloren.velloren-mac com.velloren.velloren-mac.agent)
session_folder=
session_services=()
session_processes=()

make_session_folder() {
    session_folder=$(mktemp -d "${TMPDIR:-/tmp}/velloren-demonstration-XXXXXX")
    product_environment=(
        XDG_DATA_HOME="$session_folder/home/.local/share"
        XDG_CONFIG_HOME="$session_folder/home/.config"
        XDG_STATE_HOME="$session_folder/home/.local/state"
    )
    request_log=$session_folder/requests.log
    env "${product_environment[@]}" "$binaries/velloren-main" --make-demonstration-store
}

reload_bus() {
    dbus-send --session --print-reply --dest=org.freedesktop.DBus /org/freedesktop/DBus \
        org.freedesktop.DBus.ReloadConfig >/dev/null
}

# service_file NAME COMMAND: has the bus start the command when the name is asked for.
service_file() {
    local folder=$XDG_RUNTIME_DIR/dbus-1/services
    local file=$folder/$1.service
    mkdir -p "$folder"
    if [ -e "$file" ]; then
        echo "run: $file is there already; remove it first" >&2
        exit 1
    fi
    session_services+=("$file")
    printf '[D-BUS Service]\nName=%s\nExec=/usr/bin/env %s %s\n' "$1" "${product_environment[*]}" "$2" >"$file"
}

install_services() {
    service_file com.velloren.velloren-mac "$binaries/velloren-main --log-requests $request_log"
    service_file com.velloren.velloren-mac.agent "$binaries/velloren-agent"
    reload_bus
}

# Ends what the bus started for this session.
end_activated() {
    local name process
    for name in "${product_names[@]}"; do
        process=$(dbus-send --session --print-reply --dest=org.freedesktop.DBus /org/freedesktop/DBus \
            org.freedesktop.DBus.GetConnectionUnixProcessID "string:$name" 2>/dev/null | awk '/uint32/ {print $2}')
        [ -n "$process" ] && kill "$process" 2>/dev/null
    done
    return 0
}

end_session() {
    local status=$?
    trap - EXIT INT TERM
    set +e
    if [ ${#session_services[@]} -gt 0 ]; then
        end_activated
        rm -f "${session_services[@]}"
        reload_bus 2>/dev/null
    fi
    [ ${#session_processes[@]} -gt 0 ] && kill "${session_processes[@]}" 2>/dev/null
    wait 2>/dev/null
    [ -n "$session_folder" ] && rm -rf "$session_folder"
    exit "$status"
}

agent_runs_already() {
    dbus-send --session --print-reply --dest=org.freedesktop.DBus /org/freedesktop/DBus \
        org.freedesktop.DBus.NameHasOwner string:com.velloren.velloren-mac.menu 2>/dev/null | grep -q 'boolean true'
}

show_on_this_desktop() {
    if agent_runs_already; then
        echo "run: the agent is running here already; choose Quit in its menu first" >&2
        exit 1
    fi
    : "${XDG_RUNTIME_DIR:?run: a desktop session has a runtime directory}"
    install_services
    echo "The icon is in the bar now; Ctrl-C ends the demonstration."
    trap ':' INT # the agent gets it as well, and ends
    env "${product_environment[@]}" "$binaries/velloren-menu" || true
}
