#!/usr/bin/env bash
# The hitch of a scene switch: plays the default project in a window with
# every scene shown for SCENE_SECONDS, logs each frame's cost with
# --frame-times, and prints each switch's worst frame against the run's
# median frame.
#   bench/hitch.sh [SECONDS] [SCENE_SECONDS]
# Without DISPLAY it starts its own Xvfb (display $BENCH_DISPLAY, 99 when
# unset). Uses the Release build, building velmor when it is missing, or
# the program $VELMOR names (to compare two builds).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
each=${2:-3}

if [ -z "${DISPLAY:-}" ]; then
  exec xvfb-run -n "${BENCH_DISPLAY:-99}" -s "-screen 0 1280x1024x24 +extension GLX +extension RANDR -noreset" \
    "$0" "$@"
fi
velmor=${VELMOR:-$root/build/release/src/app/velmor}
[ -x "$velmor" ] || bash "$root/scripts/build.sh" release --target velmor >&2

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
# The default project with a short run time on every entry, and a user
# folder whose configuration plays it in order (the same scenes in every
# run) with short times for the layered combinations too.
sed "s|<Scene \(File=\"[^\"]*\" Name=\"[^\"]*\"\)/>|<Scene \1 ShowTimeMax=\"$each\"/>|" \
  "$root/assets/projects/screensaver.vmp" >"$out/short.vmp"
mkdir -p "$out/config/velmor"
cat >"$out/config/velmor/config.xml" <<XML
<Velmor><Screensaver Project="$out/short.vmp" SceneMinRunTime="$each" SceneMaxRunTime="$each" RandomizeScene="0"/></Velmor>
XML
XDG_CONFIG_HOME=$out/config "$velmor" /t "$out/short.vmp" --seconds "$seconds" --frame-times "$out/frames.csv" \
  >/dev/null 2>&1

# A switch's frames: the last of the old scene to the fifth of the new one
# (the new scene's device objects are readied over the first of them). Each
# switch's worst frame is set against the run's median frame and against the
# costlier of the two scenes' own median frames (outside switches), which
# tells a switch's stall from a costly scene.
awk -F, -v window=5 '
  function median(a, n,   i, j, t) {
    for (i = 2; i <= n; ++i) for (j = i; j > 1 && a[j - 1] > a[j]; --j) { t = a[j]; a[j] = a[j - 1]; a[j - 1] = t }
    return n % 2 ? a[(n + 1) / 2] : (a[n / 2] + a[n / 2 + 1]) / 2
  }
  NR == 1 { next }
  {
    ms[++n] = $2; all[n] = $2; scene[n] = $3
    if (n > 1 && $3 != scene[n - 1]) switches[++s] = n
  }
  END {
    if (n < 10) { print "too few frames logged"; exit 1 }
    med = median(all, n)
    # Segment i runs from switch i (segment 0 from the start) to the next.
    switches[0] = 1 - window - 1
    for (i = 0; i <= s; ++i) {
      m = 0
      for (k = switches[i] + window + 1; k <= (i < s ? switches[i + 1] - 2 : n); ++k) own[++m] = ms[k]
      segMed[i] = m >= 5 ? median(own, m) : -1  # too short to settle
    }
    printf "%d frames, %d switches, median frame %.2f ms\n", n, s, med
    printf "  %-48s %9s %9s %8s %8s\n", "switch to", "worst ms", "scenes ms", "/median", "/scenes"
    for (i = 1; i <= s; ++i) {
      if (segMed[i - 1] < 0 || segMed[i] < 0) continue
      at = switches[i]; worst = 0
      for (k = at - 1; k <= at + window && k <= n; ++k) if (ms[k] > worst) worst = ms[k]
      base = segMed[i - 1] > segMed[i] ? segMed[i - 1] : segMed[i]
      name = scene[at]; gsub(/[^;]*\//, "", name)
      printf "  %-48s %9.2f %9.2f %8.2f %8.2f\n", name, worst, base, worst / med, worst / base
      r1[++c] = worst / med; r2[c] = worst / base
      if (worst / med > top1) top1 = worst / med
      if (worst / base > top2) top2 = worst / base
    }
    if (!c) exit 0
    printf "switch frame / run median frame:   worst %.2f, median %.2f (goal <= 2)\n", top1, median(r1, c)
    printf "switch frame / the scenes median:  worst %.2f, median %.2f\n", top2, median(r2, c)
  }' "$out/frames.csv"
