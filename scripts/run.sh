#!/usr/bin/env bash
# `make run`: opens Tarnwick's window on the home folder where there is a display; without
# one, starts it in the background on the home folder and prints what the scan found.
set -euo pipefail
exe="$1"
home="${HOME:-/}"
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}${QT_QPA_PLATFORM:-}" ]; then
    exec "$exe" --open "$home"
fi
"$exe" scan "$home" >/dev/null
"$exe" wait --timeout 600 >/dev/null
"$exe" summary "$home"
echo
echo "Tarnwick keeps running in the background; ask it more with: $exe help"
