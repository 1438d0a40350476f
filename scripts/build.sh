#!/usr/bin/env bash
# Configures and builds one flavour into build/<flavour>:
#   release  -O2, for running and benchmarks
#   asan     AddressSanitizer + UndefinedBehaviorSanitizer, for tests
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
flavour=${1:-release}
shift || true
case "$flavour" in
  release) opts=(-DCMAKE_BUILD_TYPE=Release -DVELMOR_SANITIZE=OFF) ;;
  asan) opts=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g" -DVELMOR_SANITIZE=ON) ;;
  *) echo "build.sh: unknown flavour '$flavour' (release|asan)" >&2; exit 2 ;;
esac
dir="$root/build/$flavour"
cmake -S "$root" -B "$dir" -G Ninja "${opts[@]}" >/dev/null
jobs=${VELMOR_JOBS:-$(nproc)}
cmake --build "$dir" -j "$jobs" "$@"
