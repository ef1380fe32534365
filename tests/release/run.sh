#!/usr/bin/env bash
# run.sh PROJECT FOLDER RELEASE MIRROR ZIP: creates a minimal Debian system of that release in FOLDER, and runs the README's two
# commands there as root, then the demo as a plain user. Also tests ZIP, a package built on this system, there. The package that is
# built there stays in FOLDER.
set -euo pipefail
project=$1
folder=$2
release=$3
mirror=$4
zip=$5

# The mounts are in a namespace that ends with this script, so no other process can see them or delete files through them.
if [ "${ORVEL_OWN_MOUNTS:-}" != $PPID ]; then
    exec unshare --mount --fork -- env ORVEL_OWN_MOUNTS=$$ "$0" "$@"
fi

system=$folder/$release
inner="/home/builder/Grafik Übersicht" # a space and a letter outside ASCII

# in_system COMMAND: a shell command in the project's folder there.
in_system() {
    chroot "$system" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 ${CI:+"CI=$CI"} \
        bash -c "cd '$inner' && $1"
}

step() { printf '\n== %s, after %d s: %s\n' "$release" $SECONDS "$1" >&2; }

step "making the system"
rm -rf --one-file-system "$system"
mkdir -p "$system"
debootstrap --variant=minbase "$release" "$system" "$mirror" >"$folder/$release.log" 2>&1 ||
    { tail -20 "$folder/$release.log" >&2; echo "debootstrap cannot make a system of $release from $mirror" >&2; exit 1; }
cp -L /etc/resolv.conf "$system/etc/resolv.conf"
mount -t proc proc "$system/proc"
mount --rbind /dev "$system/dev"

step "cloning the committed tree"
mkdir -p "$system${inner%/*}"
git -c safe.directory='*' clone --quiet --no-hardlinks "$project" "$system$inner"
if [ -n "$zip" ]; then cp "$zip"* "$system/tmp/"; fi # with its checksum file

step "./dev demo"
in_system './dev demo'
step "./dev test"
in_system './dev test'
step "./dev package"
in_system './dev package'
if [ -n "$zip" ]; then
    step "the other system's package"
    in_system "./dev check-package '/tmp/${zip##*/}'"
fi
step "./dev demo as a plain user, who has to fetch plog"
in_system "useradd builder && rm -rf build/deps build/wine && chown -R builder '$inner' &&
    setpriv --reuid=builder --regid=builder --clear-groups env HOME=/home/builder ./dev demo >/dev/null"

mkdir -p "$folder/packages-$release"
cp "$system$inner"/dist/*.zip* "$folder/packages-$release/"
step "done"
umount --recursive --lazy "$system/proc" "$system/dev"
rm -rf --one-file-system "$system"
