# The agent within the limits of its systemd unit, for the guided tour where systemd does not run: bwrap keeps them.
# Sourced by test.

unit=$PWD/Packaging/velloren-menu.service.in

# The folders that the unit lets be written, those of the tour in place of the user's.
writable_folders() {
    sed -n 's/^ReadWritePaths=//p' "$unit" | tr ' ' '\n' | sed "s|^%h|$session_folder/home|; s|^%t|$XDG_RUNTIME_DIR|"
}

# within_limits COMMAND...
within_limits() {
    local folder writable=()
    for folder in $(writable_folders); do
        mkdir -p -m 0700 "$folder"
        writable+=(--bind "$folder" "$folder")
    done
    Tests/Tour/system_call_limits.py "$unit" "$session_folder/allowed-calls" "$session_folder/forbidden-uses"
    exec env "${product_environment[@]}" bwrap --unshare-user --unshare-net --cap-drop ALL --die-with-parent \
        --ro-bind / / --dev /dev "${writable[@]}" --add-seccomp-fd 3 --add-seccomp-fd 4 "$@" \
        3<"$session_folder/allowed-calls" 4<"$session_folder/forbidden-uses"
}

# must_not WHAT STATEMENT: fails when the limits allow what the statement of Python does.
must_not() {
    if (within_limits /usr/bin/python3 -c "import ctypes, mmap, socket; $2") 2>/dev/null; then
        fail "the limits allow $1"
    fi
}

run_agent() {
    (within_limits /usr/bin/python3 -c "import ctypes, mmap, socket; socket.socket(socket.AF_UNIX)")
    must_not "a file at home" "open('$session_folder/home/file', 'w')"
    must_not "the network" "socket.socket(socket.AF_INET)"
    must_not "code that is written and run" "mmap.mmap(-1, 4096, prot=6)"
    must_not "being watched by a debugger" "1 / (1 + ctypes.CDLL(None).ptrace(0, 0, 0, 0))"
    within_limits "$binaries/velloren-menu"
}
