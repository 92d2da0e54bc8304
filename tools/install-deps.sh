#!/bin/sh
# Installs the Debian packages that the build and the tests need, only those that are missing.
# With the argument "windows": those that the Windows build (make windows) needs on top, the
# cross compilers, wine to run its tests, and clang with lld for the engine built for the
# Microsoft C++ ABI.
set -eu
packages="cmake g++ clang libclang-rt-14-dev make pkg-config libgtest-dev libgmock-dev libbenchmark-dev libpugixml-dev libzstd-dev zstd libembree-dev libtbb-dev libopenimageio-dev openimageio-tools embree-tools libassimp-dev assimp-testmodels"
if [ "${1:-}" = windows ]; then
    packages="cmake make g++-mingw-w64-x86-64-posix wine64 xz-utils clang lld"
fi
missing=""
for p in $packages; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
if [ "$(id -u)" -ne 0 ]; then
    echo "missing packages:$missing (run as root, or install them with apt-get)" >&2
    exit 1
fi
echo "installing:$missing"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends $missing
