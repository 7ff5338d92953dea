#!/usr/bin/env bash
# Installs the Debian packages that building, running and testing Sylvora need, and nothing else.
# Safe to run again: packages already present are left alone and apt is not even asked.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config git
  qt6-base-dev qt6-tools-dev qt6-l10n-tools qt6-translations-l10n qt6-image-formats-plugins qt6-qpa-plugins
  libplist-dev libsndfile1-dev libsoxr-dev libsdl2-dev libpulse-dev libasound2-dev
  libavformat-dev libavcodec-dev libavutil-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  pulseaudio pulseaudio-utils sox
  xvfb xauth xdotool x11-utils dbus libcanberra-dev libqt6svg6
  clang-14 libclang-rt-14-dev
  file debootstrap ffmpeg desktop-file-utils appstream bash-completion
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
  if [[ $(id -u) -ne 0 ]]; then
    echo "Missing packages: ${missing[*]}; run this script as root to install them." >&2
    exit 1
  fi
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
