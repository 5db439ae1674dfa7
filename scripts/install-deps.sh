#!/usr/bin/env bash
# Installs what Tarnwick needs to build, test and benchmark, from Debian's packages.
# Safe to run again: it only installs what is missing.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libgtest-dev libgmock-dev
  nlohmann-json3-dev libutf8proc-dev
  clang libclang-rt-14-dev
  clang-19 libclang-rt-19-dev
  util-linux
  qt6-base-dev qt6-charts-dev qt6-svg-dev qt6-qpa-plugins libgl-dev libqt6opengl6-dev
  xvfb xauth
  # "Show in the File Manager" is tested against a file manager on a private session bus.
  dbus-daemon
  # Daily snapshots over a month of faked dates, end to end.
  faketime
  # The package: its icons are drawn at build time; make test builds, validates and runs it,
  # and checks the manual page and the completions in the shells and man that read them.
  dpkg-dev file librsvg2-bin lintian desktop-file-utils appstream man-db bash-completion zsh fish
  # The metrics: promtool checks the exposition text and the rule file, and a node exporter
  # that a test starts itself serves the written file. No test uses their system services.
  prometheus prometheus-node-exporter
)
# Not needed by the tests, so missing is not fatal: gdu and GNU time for the benchmark
# comparison, hyperfine for the history timings, ccache to reuse compiled objects.
optional=(gdu time ccache hyperfine)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
missing_optional=()
for p in "${optional[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing_optional+=("$p")
done
[ ${#missing[@]} -eq 0 ] && [ ${#missing_optional[@]} -eq 0 ] && exit 0

sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "install-deps: need root or sudo to install: ${missing[*]}" >&2; exit 1; }
  sudo_cmd=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
# Packages with a service (prometheus, its node exporter) start it from their postinst. In a
# container without systemd that would be an init script's daemon nobody asked for, on ports
# a test may want: while installing, the policy layer refuses every start, unless a policy is
# already in place.
policy=/usr/sbin/policy-rc.d
if [ ! -d /run/systemd/system ] && [ ! -e "$policy" ]; then
  printf '#!/bin/sh\n# Written by install-deps while it installs; removed when it ends.\nexit 101\n' | "${sudo_cmd[@]}" tee "$policy" >/dev/null
  "${sudo_cmd[@]}" chmod 755 "$policy"
  trap '"${sudo_cmd[@]}" rm -f "$policy"' EXIT
fi
echo "install-deps: installing ${missing[*]} ${missing_optional[*]}"
"${sudo_cmd[@]}" apt-get update -q
if [ ${#missing[@]} -gt 0 ]; then
  "${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
if [ ${#missing_optional[@]} -gt 0 ]; then
  "${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing_optional[@]}" || \
    echo "install-deps: optional ${missing_optional[*]} not installed; benchmarks skip them" >&2
fi
