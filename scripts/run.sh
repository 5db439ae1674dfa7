#!/usr/bin/env bash
# `make run`: starts Tarnwick on the home folder and prints what the scan found.
set -euo pipefail
exe="$1"
home="${HOME:-/}"
"$exe" scan "$home" >/dev/null
"$exe" wait --timeout 600 >/dev/null
"$exe" summary "$home"
echo
echo "Tarnwick keeps running in the background; ask it more with: $exe help"
