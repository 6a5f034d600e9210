#!/usr/bin/env bash
# The launcher as the desktop entry runs it on a 1920x1080 screen: Tolmara's
# window opens inside a nested X server, the clipboard crosses both ways, and
# EXIT closes the nested server too. On a 1024x768 screen it runs Tolmara itself.
set -euo pipefail
launcher=$1 program=$2
# Two X servers, a window manager and a clipboard bridge on a busy machine: a
# failed attempt says where it stopped, and one more attempt is made.
if [ "${3:-}" != attempt ]; then
    "$0" "$launcher" "$program" attempt && exit 0
    echo "launcher check: a second attempt"
    exec "$0" "$launcher" "$program" attempt
fi
trap 'echo "launcher check: line $LINENO failed: $BASH_COMMAND"' ERR
work=$(mktemp -d)
pids=()
trap 'kill "${pids[@]}" 2>/dev/null; rm -rf "$work"' EXIT
export HOME=$work TMPDIR=$work
unset XDG_CONFIG_HOME XDG_CACHE_HOME XDG_DATA_HOME XAUTHORITY WAYLAND_DISPLAY
fail() { echo "$*" >&2; exit 1; } # stderr: some waits send their output to /dev/null
until_true() { for _ in $(seq 600); do "$@" && return 0; sleep 0.1; done; fail "timed out: $*"; }
screen() { # size: starts a screen of that size and sets DISPLAY
    Xvfb -displayfd 3 -screen 0 "$1x24" -nolisten tcp 3>"$work/display-$1" 2>/dev/null &
    pids+=($!)
    until_true test -s "$work/display-$1"
    DISPLAY=":$(cat "$work/display-$1")"
    export DISPLAY
}
inside() { DISPLAY=$inner XAUTHORITY=$(echo "$work"/tolmara-launch.*) "$@"; }
pasted() { [ "$(${2:-} xclip -o -selection clipboard 2>/dev/null)" = "$1" ]; }

screen 1024x768
[ "$(TOLMARA=printenv "$launcher" DISPLAY)" = "$DISPLAY" ] || fail "a supported screen is not used as it is"

screen 1920x1080
TOLMARA=$program "$launcher" &
pids+=($!)
launched=$!
until_true pgrep -P "$launched" Xephyr >/dev/null
inner=$(ps -o args= -p "$(pgrep -P "$launched" Xephyr)" | awk '{ print $2 }')
[ "$(inside xdpyinfo | awk '/dimensions:/ { print $2 }')" = 1152x864 ] || fail "not the largest size that fits"
until_true inside xdotool search --onlyvisible --name '^Tolmara2$' >/dev/null
printf 'http://127.0.0.1:9/a/pic01.jpg' | xclip -i -selection clipboard
until_true pasted http://127.0.0.1:9/a/pic01.jpg inside
printf 'http://127.0.0.1:9/b/pic02.jpg' | inside xclip -i -selection clipboard
until_true pasted http://127.0.0.1:9/b/pic02.jpg
window=$(inside xdotool search --onlyvisible --name '^Tolmara2$' | head -n 1)
children_gone() { ! pgrep -P "$launched" >/dev/null; }
# EXIT, at 1152x864; again if a click came before the window took input (a slow machine)
exit_clicked() { inside xdotool mousemove --window "$window" 748 582 click 1; sleep 1; children_gone; }
for _ in $(seq 30); do exit_clicked && break; done
children_gone || fail "EXIT did not close Tolmara"
wait "$launched" || true
inside xdpyinfo >/dev/null 2>&1 && fail "the nested server outlived Tolmara"
echo "launcher: nested $inner at 1152x864, clipboard both ways, closed with Tolmara"
