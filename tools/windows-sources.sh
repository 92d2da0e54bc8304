#!/bin/sh
# Unpacks the sources of pugixml and zstd into $1/pugixml and $1/zstd, for the Windows build:
# Debian builds both for Linux only, so the Windows build compiles them from Debian's own
# source packages (the versions that the Linux build links). apt fetches them with a list of
# source archives of its own, in $1/apt, and leaves the system's configuration alone.
set -eu
dest=$(realpath -m "$1")
[ -f "$dest/pugixml/src/pugixml.cpp" ] && [ -f "$dest/zstd/lib/zstd.h" ] && exit 0

. /etc/os-release
state="$dest/apt"
mkdir -p "$state/lists/partial" "$state/parts" "$state/download"
cat > "$state/parts/debian-sources.sources" <<SOURCES
Types: deb-src
URIs: http://deb.debian.org/debian
Suites: $VERSION_CODENAME
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg
SOURCES
apt_private() {
    apt-get -qq -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$state/parts" \
        -o Dir::State::Lists="$state/lists" -o APT::Sandbox::User=root "$@"
}
apt_private update
(cd "$state/download" && apt_private source --download-only pugixml libzstd)

unpack() { # name, archive pattern
    rm -rf "${dest:?}/$1" "$state/unpack"
    mkdir -p "$state/unpack"
    tar -xf "$(ls "$state"/download/$2 | head -n 1)" -C "$state/unpack"
    mv "$state/unpack"/* "$dest/$1"
}
unpack pugixml 'pugixml_*.orig.tar.*'
unpack zstd 'libzstd_*.orig.tar.*'
rm -rf "$state/unpack"
