#!/usr/bin/env bash
# Type-checks every program source for Windows: the mingw-w64 cross compiler
# parses each one with _WIN32 set (so Qt's headers define Q_OS_WIN and the
# Windows branches are compiled) against the installed Qt 6 headers. Nothing is
# linked or run. Fails on the first source with an error.
set -euo pipefail
cd "$(dirname "$0")/.."
cxx=x86_64-w64-mingw32-g++-posix
command -v "$cxx" >/dev/null || { echo "check-windows: $cxx is missing (scripts/setup-debian.sh installs it)" >&2; exit 1; }
qt=$(qmake6 -query QT_INSTALL_HEADERS 2>/dev/null || echo /usr/include/x86_64-linux-gnu/qt6)
version=$(sed -n 's/^project(Tolmara VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
flags=(-std=c++20 -fsyntax-only -Wall -Wextra -I. -isystem "$qt")
for module in QtCore QtGui QtWidgets QtNetwork; do flags+=(-isystem "$qt/$module"); done
flags+=(-DQT_NO_CAST_FROM_ASCII -DQT_NO_CAST_TO_ASCII -DQT_NO_URL_CAST_FROM_STRING
        -DQT_NO_CAST_FROM_BYTEARRAY -DQT_NO_NARROWING_CONVERSIONS_IN_CONNECT
        -DQT_DISABLE_DEPRECATED_UP_TO=0x060400 -DTOLMARA_VERSION="\"$version\"")
sources=(main.cpp)
for dir in app engine fetch view magazine ui platform; do
    [ -d "$dir" ] && while IFS= read -r file; do sources+=("$file"); done < <(find "$dir" -name '*.cpp' | sort)
done
echo "check-windows: ${#sources[@]} sources"
export cxx
printf '%s\0' "${sources[@]}" | xargs -0 -n 1 -P "$(nproc)" sh -c '"$cxx" "$@" || exit 255' sh "${flags[@]}"
echo "check-windows: all sources pass for Windows"
