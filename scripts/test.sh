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
status=0
if [ -z "${DISPLAY:-}" ] || [ "${VELMOR_OWN_XVFB:-1}" = 1 ]; then
  xvfb-run -a -s "-screen 0 1280x1024x24 +extension GLX +extension RANDR -noreset" ctest "${ctest_args[@]}" || status=$?
else
  ctest "${ctest_args[@]}" || status=$?
fi
# Every reader of files from strangers is fuzzed briefly on its seeds, so that
# one that breaks shows here (VELMOR_FUZZ_SECONDS=0 skips this).
fuzz_seconds=${VELMOR_FUZZ_SECONDS:-30}
if [ "$fuzz_seconds" -gt 0 ]; then
  bash "$root/scripts/fuzz.sh" "$fuzz_seconds" || status=1
fi
exit $status
