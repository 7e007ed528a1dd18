#!/usr/bin/env bash
# Installs the Debian packages the build needs that are not yet on the machine.
# Does nothing (and needs no network) when everything is already there.
set -euo pipefail

packages=(
  build-essential cmake ninja-build ccache pkg-config
  clang clang-format
  libboost-dev
  libcairo2-dev libpango1.0-dev fonts-dejavu-core librsvg2-dev
  libsdl2-dev libpugixml-dev
  libfftw3-dev libebur128-dev libsndfile1-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev xvfb
  libmuparser-dev
  nlohmann-json3-dev
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
  sudo_cmd=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
