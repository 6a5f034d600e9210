#!/usr/bin/env bash
# Installs, with apt-get, whatever of Tolmara's build and test needs is missing.
set -euo pipefail
# openssl: https:// needs its library (libssl3) at run time, and the tests make
# their certificates with its command line. desktop-file-utils, appstream,
# dpkg-dev and lintian check the desktop files and build and check the Debian
# package; the mingw-w64 compiler type-checks the sources for Windows. The
# launcher's test runs it on a private X screen with what it recommends.
needed=(cmake g++ make qt6-base-dev qt6-base-dev-tools libgl-dev openssl
        desktop-file-utils appstream dpkg-dev lintian g++-mingw-w64-x86-64-posix
        xvfb xauth xserver-xephyr openbox xclip x11-utils xdotool)
missing=()
for package in "${needed[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing: ${missing[*]}"
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
