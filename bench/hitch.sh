#!/usr/bin/env bash
# The hitch of a scene switch: plays the default project in a window with
# every scene shown for SCENE_SECONDS, logs each frame's cost with
# --frame-times, and prints each switch's worst frame (the last frame of
# the old scene to the third of the new one) against the run's median frame.
#   bench/hitch.sh [SECONDS] [SCENE_SECONDS]
# Without DISPLAY it starts its own Xvfb (display $BENCH_DISPLAY, 99 when
# unset). Uses the Release build, building velmor when it is missing.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
each=${2:-2}

if [ -z "${DISPLAY:-}" ]; then
  exec xvfb-run -n "${BENCH_DISPLAY:-99}" -s "-screen 0 1280x1024x24 +extension GLX +extension RANDR -noreset" \
    "$0" "$@"
fi
velmor=$root/build/release/src/app/velmor
[ -x "$velmor" ] || bash "$root/scripts/build.sh" release --target velmor >&2

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
# The default project with a short run time on every entry, and a user
# folder whose configuration plays it with short times for the layered
# combinations too.
sed "s|<Scene \(File=\"[^\"]*\" Name=\"[^\"]*\"\)/>|<Scene \1 ShowTimeMax=\"$each\"/>|" \
  "$root/assets/projects/screensaver.vmp" >"$out/short.vmp"
mkdir -p "$out/config/velmor"
cat >"$out/config/velmor/config.xml" <<XML
<Velmor><Screensaver Project="$out/short.vmp" SceneMinRunTime="$each" SceneMaxRunTime="$each"/></Velmor>
XML
XDG_CONFIG_HOME=$out/config "$velmor" /t "$out/short.vmp" --seconds "$seconds" --frame-times "$out/frames.csv" \
  >/dev/null 2>&1

awk -F, '
  function median(a, n,   i, j, t) {
    for (i = 2; i <= n; ++i) for (j = i; j > 1 && a[j - 1] > a[j]; --j) { t = a[j]; a[j] = a[j - 1]; a[j - 1] = t }
    return n % 2 ? a[(n + 1) / 2] : (a[n / 2] + a[n / 2 + 1]) / 2
  }
  NR == 1 { next }
  {
    ms[++n] = $2; sorted[n] = $2; scene[n] = $3
    if (n > 1 && $3 != scene[n - 1]) switches[++s] = n
  }
  END {
    if (n < 10) { print "too few frames logged"; exit 1 }
    med = median(sorted, n)
    printf "%d frames, %d switches, median frame %.2f ms\n", n, s, med
    for (i = 1; i <= s; ++i) {
      at = switches[i]; worst = 0
      for (k = at - 1; k <= at + 2 && k <= n; ++k) if (ms[k] > worst) worst = ms[k]
      name = scene[at]; gsub(/[^;]*\//, "", name)
      printf "  switch to %-40s worst %8.2f ms  %6.2fx median\n", name, worst, worst / med
      if (worst > top) top = worst
    }
    if (s) printf "worst switch frame / median frame: %.2f (goal <= 2)\n", top / med
  }' "$out/frames.csv"
