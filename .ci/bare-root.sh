# Bare roots of Debian releases; sourced by test and Packaging/try-in-clean-root, for root only.

# make_bare_root RELEASE FOLDER: with the mirror of DEBIAN_MIRROR, or Debian's own, and this machine's way to the network.
make_bare_root() {
    local release=$1 root=$2 mirror=${DEBIAN_MIRROR:-http://deb.debian.org/debian} script=/usr/share/debootstrap/scripts
    # A release that this machine's debootstrap does not know yet is made as any.
    [ -e "$script/$release" ] && script=$script/$release || script=$script/sid
    debootstrap --variant=minbase "$release" "$root" "$mirror" "$script" >"$root.log" || { tail "$root.log" >&2; return 1; }
    rm -f "$root/etc/apt/sources.list" "$root.log"
    cat >"$root/etc/apt/sources.list.d/debian.sources" <<X
Types: deb
URIs: $mirror
Suites: $release $release-updates
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg

Types: deb
URIs: $mirror-security
Suites: $release-security
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg
X
    apt-config dump | grep -E '^Acquire::(http|https|Check-)' >"$root/etc/apt/apt.conf.d/90machine" || true
    cp /etc/resolv.conf "$root/etc/"
    in_bare_root "$root" apt-get update -qq
}

# in_bare_root ROOT COMMAND...: what it mounts and starts there ends with it.
in_bare_root() {
    unshare --mount --pid --fork --kill-child bash -c '
        root=$1
        shift
        mount --bind "$root" "$root" # a root of its own again for who makes one in there
        mount -t proc proc "$root/proc"
        mount --rbind /dev "$root/dev"
        mount -t tmpfs tmpfs "$root/dev/shm"
        mount --rbind /sys "$root/sys"
        chroot "$root" /usr/bin/env -i HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin CI="${CI:-}" "$@"
        exit $? # the shell stays, for the processes that lose their parents
    ' bash "$@"
}
