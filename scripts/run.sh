#!/usr/bin/env bash
# Installs what is missing, builds Release and plays the bundled default
# project: in a window when there is a display, otherwise the music project
# under a private Xvfb, hearing the bundled demo track (tools/make_demo_track.py
# makes it) and saving a picture of the screen every few seconds into
# out/pictures.
# Arguments are passed to velmor (see build/release/src/app/velmor --help).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/install-deps.sh"
bash "$root/scripts/build.sh" release --target velmor  # the program alone: tests and benchmarks wait for who runs them
velmor="$root/build/release/src/app/velmor"
cd "$root/assets"  # the installation tree the program runs from
if [ -n "${DISPLAY:-}" ]; then
  exec "$velmor" /t "$@"
fi
pictures="$root/out/pictures"
mkdir -p "$pictures"
track="$root/assets/music/demo-track.wav"
[ -f "$track" ] || python3 "$root/tools/make_demo_track.py" "$track"
echo "No display: playing the music project to the demo track for ${VELMOR_SECONDS:-30} seconds under Xvfb, pictures into $pictures"
xvfb-run -a -s "-screen 0 1280x1024x24 +extension GLX +extension RANDR" \
  "$velmor" /t projects/music.vmp --audio "$track" --seconds "${VELMOR_SECONDS:-30}" --pictures "$pictures" \
  --picture-every 3 "$@"
ls -1 "$pictures" | tail -n 12
