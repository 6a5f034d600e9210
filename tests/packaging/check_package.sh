#!/usr/bin/env bash
# Builds the .deb, unpacks it into a scratch root as dpkg would install it, and
# checks every file's place, the desktop files and the dependencies.
set -euo pipefail
source=$1 build=$2
deb=$("$source/scripts/package.sh" "$build" | tail -n 1)
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
dpkg -x "$deb" "$root"

want=$(printf '%s\n' usr/bin/tolmara usr/bin/tolmara-launch usr/share/applications/tolmara.desktop \
    usr/share/doc/tolmara/{copyright,changelog.gz} usr/share/man/man1/{tolmara,tolmara-launch}.1.gz \
    usr/share/metainfo/org.tolmara.Tolmara.metainfo.xml usr/share/icons/hicolor/scalable/apps/tolmara.svg \
    usr/share/icons/hicolor/{16x16,32x32,48x48,256x256}/apps/tolmara.png | sort)
have=$(cd "$root" && find . -type f | sed 's|^\./||' | sort)
[ "$have" = "$want" ] || { echo "files differ (- wanted, + packaged):"; diff <(echo "$want") <(echo "$have"); exit 1; }
for program in tolmara tolmara-launch; do
    [ -x "$root/usr/bin/$program" ] || { echo "usr/bin/$program is not executable"; exit 1; }
done
desktop-file-validate "$root/usr/share/applications/tolmara.desktop"
appstreamcli validate --no-net "$root/usr/share/metainfo/org.tolmara.Tolmara.metainfo.xml" >/dev/null

depends=$(dpkg-deb -f "$deb" Depends)
echo "Depends: $depends"
for package in libssl3 libqt6core6 libqt6gui6 libqt6widgets6 libqt6network6 libc6 libstdc++6; do
    [[ ", $depends," == *", $package"[\ ,]* ]] || { echo "no dependency on $package"; exit 1; }
done
if grep -q asan <<<"$depends"; then echo "a sanitizer build was packaged"; exit 1; fi
lintian --fail-on error "$deb"
