#!/usr/bin/env bash
# The frame cost of every scene of the bundled projects at 1280x720 and
# 640x360, beside a peer (Debian's libprojectM drawing a fixed list of its
# presets, bench/peer) in the same run, on the same X server and OpenGL.
#   bench/scenes.sh [FRAMES] [PEER_FRAMES] [ROUNDS]
# A scene's cost is the time of FRAMES frames drawn by bench_scenes (as
# `velmor-tool render` draws them, at 30 frames a second of scene time) after
# a few settling ones, so loading, effect compiling, the window and the
# driver's shader compiles are left out; the peer's presets likewise. Each
# scene and preset keeps its best of ROUNDS rounds. Without DISPLAY it
# starts its own Xvfb (display $BENCH_DISPLAY, 99 when unset). Uses the
# Release build, building what it needs; installs the peer's packages (root)
# when they are missing. Velmor itself never links the peer.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
frames=${1:-60}
peer_frames=${2:-30}
rounds=${3:-2}
sizes=(1280x720 640x360)

if [ -z "${DISPLAY:-}" ]; then
  exec xvfb-run -n "${BENCH_DISPLAY:-99}" -s "-screen 0 1280x1024x24 +extension GLX +extension RANDR -noreset" \
    "$0" "$@"
fi

build=$root/build/release
timer=$build/bench/bench_scenes
[ -x "$timer" ] || bash "$root/scripts/build.sh" release --target bench_scenes >&2

peer=$build/bench/peer/peer
if ! pkg-config --exists libprojectM || [ ! -d /usr/share/projectM/presets ]; then
  apt-get install -y libprojectm-dev projectm-data >&2
fi
if [ ! -x "$peer" ] || [ "$root/bench/peer/peer.cpp" -nt "$peer" ]; then
  mkdir -p "$(dirname "$peer")"
  # shellcheck disable=SC2046
  g++ -O2 -std=c++20 -o "$peer" "$root/bench/peer/peer.cpp" $(pkg-config --cflags --libs libprojectM) -lGL -lX11
fi

# Every scene file the bundled projects name, each once.
mapfile -t scenes < <(sed -n 's/.*File="\[apppath\]\([^"]*\.vms\)".*/\1/p' "$root"/assets/projects/*.vmp | sort -u)

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

# Size by size, the peer and then the scenes, so that both see about the
# same load on a shared machine.
peers=()
for size in "${sizes[@]}"; do
  "$peer" "${size%x*}" "${size#*x}" "$peer_frames" "$rounds" "$root/bench/peer/presets.txt" 2>/dev/null |
    grep -E '^[0-9.]+ ' >"$out/peer-$size" || true
  peers+=("$out/peer-$size")
  (cd "$root/assets" && "$timer" "$size" "$frames" "$rounds" "${scenes[@]}" 2>/dev/null) | cut -d' ' -f1 >"$out/velmor-$size"
done
table=$out/table
printf '%s\n' "${scenes[@]}" | xargs -n1 basename | sed 's/\.vms$//' |
  paste -d' ' - "$out/velmor-${sizes[0]}" "$out/velmor-${sizes[1]}" >"$table"
printf "%-22s %12s %12s\n" "ms per frame" "${sizes[@]}"
awk '{ printf "%-22s %12s %12s\n", $1, $2, $3 }' "$table"

# Medians and the worst scene per size, and the ratios against the peer.
awk -v sizes="${sizes[*]}" -v p1="${peers[0]}" -v p2="${peers[1]}" '
  function median(a, n,   i, j, t) {
    for (i = 2; i <= n; ++i) for (j = i; j > 1 && a[j - 1] > a[j]; --j) { t = a[j]; a[j] = a[j - 1]; a[j - 1] = t }
    return n % 2 ? a[(n + 1) / 2] : (a[n / 2] + a[n / 2 + 1]) / 2
  }
  { for (c = 2; c <= 3; ++c) if ($c != "failed") { v[c, ++n[c]] = $c; if ($c > worst[c]) { worst[c] = $c; wname[c] = $1 } } }
  END {
    split(sizes, sz, " ")
    pf[2] = p1; pf[3] = p2
    for (c = 2; c <= 3; ++c) {
      for (i = 1; i <= n[c]; ++i) m[i] = v[c, i]
      med[c] = median(m, n[c])
      k = 0
      while ((getline line < pf[c]) > 0) { split(line, f, " "); pm[++k] = f[1]; ps[k] = f[2] }
      peer[c] = k ? median(pm, k) : 0
      pswitch[c] = k ? median(ps, k) : 0
      np[c] = k
    }
    printf "\n%-34s %12s %12s\n", "ms per frame", sz[1], sz[2]
    printf "%-34s %12.2f %12.2f\n", "Velmor median scene", med[2], med[3]
    printf "%-34s %12.2f %12.2f   (%s, %s)\n", "Velmor worst scene", worst[2], worst[3], wname[2], wname[3]
    printf "%-34s %12.2f %12.2f   (%d presets)\n", "peer median preset", peer[2], peer[3], np[2]
    printf "%-34s %12.1f %12.1f\n", "peer median preset switch", pswitch[2], pswitch[3]
    if (np[2] && np[3]) {
      printf "%-34s %12.2f %12.2f   (goal >= 1)\n", "peer median / Velmor worst", peer[2] / worst[2], peer[3] / worst[3]
      printf "%-34s %12.2f %12.2f   (goal >= 3)\n", "peer median / Velmor median", peer[2] / med[2], peer[3] / med[3]
    } else {
      print "the peer did not run"
    }
  }' "$table"
