#!/usr/bin/env bash
# scripts/screenshots.sh BUILD_DIR OUTPUT_FOLDER [LARGE_FOLDER]: what `make screenshots` runs.
#
# The pictures show the demo home where a user's home is, /home/alex, rather than inside the
# build folder: in a user namespace of its own (no root needed), the demo folder
# BUILD_DIR/screenshot-demo is bind-mounted at /home, so that the generated home in it (whose
# large files reserve space without writing data) is the plain folder /home/alex, and its
# settings and history are /home/config and /home/data. The folder that holds the large folder
# for the picture of a running scan is mounted at /srv the same way (a mount point of its own
# would be scanned as a disk). Nothing outside the namespace sees either mount. Where user namespaces are not allowed, the pictures are made at
# the folders' own paths, and the script says so.
set -euo pipefail

if [ $# -lt 2 ] || [ $# -gt 3 ]; then
    echo "usage: scripts/screenshots.sh BUILD_DIR OUTPUT_FOLDER [LARGE_FOLDER]" >&2
    exit 2
fi
build=$(cd "$1" && pwd)
output=$2
large=${3:-}
tool=$build/tarnwick_screenshots
demo=$build/screenshot-demo
export QT_QPA_PLATFORM=offscreen
mkdir -p "$demo/alex" "$output"
trap 'rm -rf "$demo" "$demo.complete"' EXIT

inside='
set -e
mount --bind "$DEMO" /home
if [ -n "$LARGE" ]; then
    mount --bind "$(dirname "$LARGE")" /srv
    exec "$TOOL" "$OUTPUT" /home "/srv/$(basename "$LARGE")"
fi
exec "$TOOL" "$OUTPUT" /home
'
if unshare --user --map-root-user --mount true 2>/dev/null; then
    DEMO=$demo LARGE=$large TOOL=$tool OUTPUT=$output unshare --user --map-root-user --mount bash -c "$inside"
else
    echo "screenshots: user namespaces are not allowed here; the pictures show $demo/alex as the home" >&2
    "$tool" "$output" "$demo" ${large:+"$large"}
fi
