#!/usr/bin/env bash
# Installs what is missing, builds Release and runs Velmor's main job.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/install-deps.sh"
bash "$root/scripts/build.sh" release
exec "$root/build/release/src/app/velmor" "$@"
