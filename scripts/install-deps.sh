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
  # Daily snapshots over a month of faked dates, end to end.
  faketime
  # The package: its icons are drawn at build time; make test builds, validates and runs it,
  # and checks the manual page and the completions in the shells and man that read them.
  dpkg-dev file librsvg2-bin lintian desktop-file-utils appstream man-db bash-completion zsh fish
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
echo "install-deps: installing ${missing[*]} ${missing_optional[*]}"
"${sudo_cmd[@]}" apt-get update -q
if [ ${#missing[@]} -gt 0 ]; then
  "${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
if [ ${#missing_optional[@]} -gt 0 ]; then
  "${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing_optional[@]}" || \
    echo "install-deps: optional ${missing_optional[*]} not installed; benchmarks skip them" >&2
fi
