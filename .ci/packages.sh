# The Debian packages that building, testing and demonstrating need; sourced by run and test. Of one|other, the first
# that the machine's release has; one| may be missing from it.

build_packages=(
    cmake g++ ninja-build pkg-config librsvg2-bin
    qt6-base-dev qt6-base-dev-tools qt6-base-private-dev qt6-l10n-tools
    libbackward-cpp-dev libdw-dev libfontconfig-dev libicu-dev libspdlog-dev libsqlite3-dev
    libsqlitecpp-dev libsystemd-dev libwayland-dev libxcb1-dev libxcb-xfixes0-dev libxcb-xinput-dev wayland-protocols
)

# A desktop to show itself on where there is none.
desktop_packages=(
    adwaita-icon-theme dbus fonts-inter fonts-noto-cjk fonts-noto-color-emoji fonts-noto-core
    hicolor-icon-theme hsetroot imagemagick sqlite3 x11-utils xdotool xfce4-panel xfwm4 xvfb
)

test_packages=(
    at-spi2-core bubblewrap clang clang-format clang-tidy gir1.2-atspi-2.0 gir1.2-glib-2.0 libbenchmark-dev
    libclang-rt-dev libgmock-dev libgtest-dev libxcb-xtest0-dev python3-gi python3-seccomp systemd "trayer|" xdg-utils
    xrestop xsettingsd
)

# The desktops that the agent is tried on: those of few packages, and those of many.
light_desktop_packages=(
    awesome i3-wm i3status "labwc|" lxpanel lxqt-panel lxqt-themes marco mate-panel mate-settings-daemon-common openbox
    polybar qt6-wayland sway swaybg swaylock tigervnc-standalone-server tint2 waybar wlr-randr x11-xserver-utils xfconf xwayland
)
heavy_desktop_packages=(
    budgie-core cinnamon gnome-shell gnome-shell-extension-appindicator kwin-wayland kwin-x11 "libkscreen-bin|libkf5screen-bin"
    plasma-desktop plasma-workspace qtwayland5 xapp-sn-watcher
)

packaging_packages=(
    appstream binutils desktop-file-utils dpkg-dev file lintian
)

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# is_installed ONE|OTHER
is_installed() { dpkg-query -W -f='${Status}\n' ${1//|/ } 2>/dev/null | grep -q 'ok installed'; }

# in_this_release ONE|OTHER: prints the first that there is, the last where none is.
in_this_release() {
    local package
    for package in ${1//|/ }; do
        apt-cache policy "$package" | grep 'Candidate: [^(]' >/dev/null && echo "$package" && return
    done
    [[ $1 = *'|' ]] || echo "$package"
}

# install_missing PACKAGE...: installs those that are not there, and says so.
install_missing() {
    local missing=() package
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    as_root apt-get update -qq
    mapfile -t missing < <(for package in "${missing[@]}"; do in_this_release "$package"; done)
    [ ${#missing[@]} -eq 0 ] && return
    echo "Installing with apt-get: ${missing[*]}"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 install -y -qq --no-install-recommends "${missing[@]}"
}

# configure PRESET [OPTION...]: makes the build folder of that preset, with ccache where it is installed. With CI set
# a warning is an error.
configure() {
    local preset=$1 options=()
    shift
    command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    [ -z "${CI:-}" ] || options+=(-DCMAKE_COMPILE_WARNING_AS_ERROR=ON)
    cmake --preset "$preset" "${options[@]}" "$@" >/dev/null
}
