# The guided tour: shows on a desktop of its own, with real clicks, what the agent does, and proves each step
# with the log lines of the programs. Sourced by run.

source Companions/Demonstration/desktop.sh

pictures=$PWD/pictures
step_number=0

step() {
    step_number=$((step_number + 1))
    printf '\n%d. %s\n' "$step_number" "$1"
}

fail() {
    echo "   FAILED: $1" >&2
    echo "--- the agent's log" >&2
    cat "$session_folder/menu.log" >&2 2>/dev/null
    exit 1
}

# wait_until WHAT COMMAND...: repeats the command until it succeeds.
wait_until() {
    local what=$1 attempt
    shift
    for attempt in $(seq 300); do
        "$@" >/dev/null 2>&1 && return
        sleep 0.1
    done
    fail "$what did not come within 30 seconds"
}

# prove FILE TEXT: waits for a line of the log with that text, and shows it.
prove() {
    wait_until "\"$2\" in the log" grep -qF -- "$2" "$1"
    grep -F -- "$2" "$1" | tail -n 1 | sed 's/^/   | /'
}

# picture NAME
picture() {
    mkdir -p "$pictures"
    local file
    file=$pictures/$(printf '%02d' "$step_number")-$1.png
    import -window root "$file"
    echo "   picture: $file"
}

click() {
    xdotool mousemove "$1" "$2" click 1
}

popover_geometry() {
    local window
    window=$(xdotool search --onlyvisible --class velloren-menu 2>/dev/null | tail -n 1)
    [ -n "$window" ] || return 1
    eval "$(xdotool getwindowgeometry --shell "$window")"
    [ "$HEIGHT" -gt 100 ]
}

popover_is_gone() { ! popover_geometry; }

# on_screen AREA FORMAT: what the format says of that area of the screen.
on_screen() {
    import -window root "$session_folder/screen.png"
    convert "$session_folder/screen.png" -crop "$1" +repage -depth 8 -format "$2" info:
}

# The grey of its last row is there.
popover_is_painted() {
    popover_geometry && [ "$(on_screen "1x1+$((X + WIDTH - 204))+$((Y + 255))" '%[hex:p{0,0}]')" = ECECEC ]
}

open_popover() {
    click $((screen_width - 18)) 15
    wait_until "the popover" popover_is_painted
}

# click_in_popover RIGHT DOWN: so far from its right edge and from its top. Its window goes on to the screen's
# edge, 4 further.
click_in_popover() {
    popover_geometry
    click $((X + WIDTH - 4 - $1)) $((Y + $2))
}

icon_is_there() {
    [ "$(dbus-send --session --print-reply --dest=org.kde.StatusNotifierWatcher /StatusNotifierWatcher \
        org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierWatcher \
        string:RegisteredStatusNotifierItems | grep -c StatusNotifierItem)" -ge 1 ]
}

# The lower edge of the icon stands out from the panel below it.
icon_is_drawn() {
    [ "$(on_screen "1x6+$((screen_width - 18))+23" '%[fx:abs(p{0,0}.g-p{0,5}.g)>0.3]')" = 1 ]
}

# In a process of its own; checks put something around the agent.
run_agent() {
    exec env "${product_environment[@]}" "$binaries/velloren-menu"
}

tour_icon() {
    step "The agent starts and puts its icon into the bar"
    run_agent >"$session_folder/menu.log" 2>&1 &
    agent=$!
    session_processes+=("$agent")
    wait_until "the icon" icon_is_there
    prove "$agent_log" "Registering menuAppListener endpoint SUCCESSFUL"
    prove "$agent_log" "Setting up Fabric"
    wait_until "its picture" icon_is_drawn
    picture icon
}

tour_popover() {
    step "A click on the icon opens the popover, fed from the local store"
    open_popover
    prove "$agent_log" "Velloren main app is running=false"
    prove "$agent_log" "Fetching from Realm, meetings.count="
    sleep 0.3
    picture popover
}

tour_open_meeting() {
    step "A meeting is opened while the main app is not running: recorded, launched, connected, delivered"
    click_in_popover 43 46
    prove "$agent_log" "Open meeting demo-1 operation is recorded, waiting for main app to launch..."
    prove "$agent_log" "Launching com.velloren.velloren-mac, launched=true"
    prove "$agent_log" "Main app is launched"
    prove "$agent_log" "Retrying in 0.5 seconds to establish connection with main app again"
    prove "$agent_log" "Connection to main app established with handler="
    prove "$agent_log" "Velloren Menu agent?.openMeeting(withId: demo-1)"
    prove "$request_log" "open demo-1"
    wait_until "the popover's end" popover_is_gone
    wait_until "the main app's window" xdotool search --onlyvisible --class velloren-main
    sleep 0.5
    picture meeting-opened
}

tour_fed_by_main_app() {
    step "The popover again, now fed by the main app"
    open_popover
    prove "$agent_log" "Velloren main app is running=true"
    prove "$agent_log" "Velloren Menu agent.fetchUpcomingMeetings(), meetings count = Optional("
    prove "$request_log" "fetch"
    sleep 0.3
    picture popover-fed-by-main-app
}

tour_create() {
    step "A meeting is created: the request goes out at once"
    click_in_popover 160 216
    prove "$agent_log" "Create new meeting operation is immediately sent to Agent"
    prove "$request_log" "create"
    wait_until "the popover's end" popover_is_gone
    sleep 0.3
    picture meeting-created
}

menu_is_open() { [ "$(xdotool search --onlyvisible --class velloren-menu 2>/dev/null | wc -l)" -ge 2 ]; }

has_ended() { ! kill -0 "$1"; }

tour_quit() {
    step "The action menu; its last item ends the agent"
    open_popover
    click_in_popover 24 255
    wait_until "the menu" menu_is_open
    sleep 0.3
    picture action-menu
    xdotool key Up Return
    prove "$agent_log" "applicationShouldTerminate: <Application: velloren-menu>"
    prove "$agent_log" "applicationWillTerminate"
    wait_until "the agent's end" has_ended "$agent"
    wait "$agent" || fail "the agent ended with status $?"
}

take_tour() {
    agent_log=$session_folder/menu.log
    touch "$agent_log" "$request_log"
    echo "There is no desktop here: taking a guided tour on one in memory."
    start_desktop
    product_environment+=(DISPLAY="$DISPLAY" FONTCONFIG_FILE="$FONTCONFIG_FILE")
    install_services
    tour_icon
    tour_popover
    tour_open_meeting
    tour_fed_by_main_app
    tour_create
    tour_quit
    printf '\nThe tour is complete. Its pictures are in %s\n' "$pictures"
}
