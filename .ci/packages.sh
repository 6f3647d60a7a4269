# The Debian packages that building, testing and demonstrating need; sourced by run and test.

build_packages=(
    cmake g++ ninja-build pkg-config librsvg2-bin
    qt6-base-dev qt6-base-dev-tools qt6-base-private-dev qt6-l10n-tools
    libbackward-cpp-dev libdw-dev libfontconfig-dev libicu-dev libpng-dev libspdlog-dev libsqlite3-dev
    libsqlitecpp-dev libsystemd-dev libwayland-dev libxcb1-dev libxcb-xfixes0-dev libxcb-xinput-dev wayland-protocols
)

# A desktop to show itself on where there is none.
desktop_packages=(
    adwaita-icon-theme dbus fonts-inter fonts-noto-cjk fonts-noto-color-emoji fonts-noto-core
    hicolor-icon-theme hsetroot imagemagick sqlite3 x11-utils xdotool xfce4-panel xfwm4 xvfb
)

test_packages=(
    at-spi2-core bubblewrap clang clang-format clang-tidy gir1.2-atspi-2.0 gir1.2-glib-2.0 libbenchmark-dev
    libclang-rt-14-dev libgmock-dev libgtest-dev libxcb-xtest0-dev python3-gi python3-seccomp systemd trayer xdg-utils
    xrestop
)

# The desktops that the agent is tried on: those of few packages, and those of many.
light_desktop_packages=(
    i3-wm i3status lxqt-panel lxqt-themes marco mate-panel mate-settings-daemon-common openbox qt6-wayland sway
    tigervnc-standalone-server tint2 waybar x11-xserver-utils xfconf xwayland
)
heavy_desktop_packages=(
    budgie-core cinnamon gnome-shell gnome-shell-extension-appindicator kwin-wayland kwin-x11 libkf5screen-bin
    plasma-desktop plasma-workspace qtwayland5 xapp-sn-watcher
)

packaging_packages=(
    appstream binutils desktop-file-utils dpkg-dev file lintian
)

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# install_missing PACKAGE...: installs those that are not there, and says so.
install_missing() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    echo "Installing with apt-get: ${missing[*]}"
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 install -y -qq --no-install-recommends "${missing[@]}"
}

# configure PRESET [OPTION...]: makes the build folder of that preset, with ccache where it is installed.
configure() {
    local preset=$1 launcher=()
    shift
    command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    cmake --preset "$preset" "${launcher[@]}" "$@" >/dev/null
}
