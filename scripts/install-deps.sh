#!/usr/bin/env bash
# Installs the Debian packages Velmor needs, and only those that are missing,
# so that a second run costs a few dpkg queries and nothing else.
set -euo pipefail

PACKAGES=(
  # toolchain and test frameworks
  cmake ninja-build g++ pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  # rendering tests run for real under a virtual X server
  xvfb xauth x11-xserver-utils libgl1-mesa-dri
  # the program's own end-to-end tests move the pointer through XTest
  libxtst-dev
  # emitted effect GLSL is checked strictly in the tests
  glslang-tools
  # libraries
  libtinyxml-dev
  libx11-dev libxrandr-dev libxext-dev libxss-dev libgl-dev libglew-dev libfreeimage-dev
  libpulse-dev libsndfile1-dev
  # movies: record mode and velmor-tool record write through FFmpeg
  libavformat-dev libavcodec-dev libswscale-dev libavutil-dev
  # the weekly usage statistics upload (HTTP POST)
  libcurl4-openssl-dev
  # benchmark baseline for the audio spectrum
  libfftw3-dev
  # benchmark baseline for the expression language
  libmuparser-dev
  # test and benchmark baseline for the Voronoi sweep (Boost.Polygon, headers only)
  libboost-dev
  # fuzzing the file readers: clang with libFuzzer (scripts/fuzz.sh)
  clang libclang-rt-14-dev
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
