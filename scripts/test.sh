#!/usr/bin/env bash
# Installs what is missing, builds with sanitizers and runs every test.
# OpenGL tests need an X server: the tests run under a private Xvfb, kept
# from resetting between clients (while it resets it refuses connections,
# and a test that opens the display just then fails).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/install-deps.sh"
bash "$root/scripts/build.sh" asan
cd "$root/build/asan"
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
ctest_args=(--output-on-failure -j "$(nproc)" "$@")
if [ -z "${DISPLAY:-}" ] || [ "${VELMOR_OWN_XVFB:-1}" = 1 ]; then
  exec xvfb-run -a -s "-screen 0 1280x1024x24 +extension GLX +extension RANDR -noreset" ctest "${ctest_args[@]}"
fi
exec ctest "${ctest_args[@]}"
