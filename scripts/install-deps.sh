#!/usr/bin/env bash
# Installs the Debian packages the project needs; does nothing when all are present.
#   scripts/install-deps.sh            build and test dependencies
#   scripts/install-deps.sh --tables   also the table sources used by tools/gentables.py
set -euo pipefail

build=(cmake ninja-build g++ pkg-config zlib1g-dev libbz2-dev liblzma-dev libx11-dev libxss-dev libxrandr-dev libxcursor-dev libcairo2-dev
       libpango1.0-dev libfontconfig-dev fonts-dejavu-core fonts-wqy-microhei)
tests=(libgtest-dev libgmock-dev libbenchmark-dev xvfb xauth xdotool xclip imagemagick
       clang libfuzzer-14-dev clang-format python3 sox libsox-fmt-all ffmpeg ghostscript
       desktop-file-utils shared-mime-info libglib2.0-bin openbox x11-xserver-utils dmz-cursor-theme
       libxfixes-dev fonts-urw-base35)
# run.sh without a display: the editor under a private Xvfb, photographed.
run=(xvfb x11-utils xdotool imagemagick)
# The carvers that bench/carvers.py compares qvraci-rules with, and GNU time.
carvers=(testdisk foremost scalpel time)
tables=(locales unicode-data python3)

wanted=("${build[@]}" "${run[@]}" "${tests[@]}" "${carvers[@]}")
[[ "${1:-}" == "--tables" ]] && wanted+=("${tables[@]}")

missing=()
for pkg in "${wanted[@]}"; do
  status=$(dpkg-query -W -f='${db:Status-Status}' "$pkg" 2>/dev/null || true)
  [[ "$status" == "installed" ]] || missing+=("$pkg")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "install-deps: installing ${missing[*]}"
sudo=()
[[ $(id -u) -eq 0 ]] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -q
"${sudo[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
