#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, build/fuzz) and runs each for a while
# on its seeds and on the corpus that earlier runs grew:
#   scripts/fuzz.sh [SECONDS] [TARGET...]      default 60 s, every target
# VELMOR_FUZZ_PARALLEL targets run at once (default 1), niced. A crash, a
# hang over 10 s or memory over 2 GB fails the run; the input is kept in
# build/fuzz/crashes/. Prints executions and coverage per target.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
shift || true
dir="$root/build/fuzz"

# VELMOR_FUZZ_BUILD=0 runs what is built already.
if [ "${VELMOR_FUZZ_BUILD:-1}" = 1 ]; then
  CC=${VELMOR_FUZZ_CC:-clang} CXX=${VELMOR_FUZZ_CXX:-clang++} cmake -S "$root" -B "$dir" -G Ninja \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only" \
    -DVELMOR_FUZZ=ON -DVELMOR_TESTS=OFF -DVELMOR_BENCH=OFF >/dev/null
  cmake --build "$dir" -j "${VELMOR_JOBS:-$(nproc)}" --target "${@:-fuzz_targets}"
fi

# Seeds are gathered afresh: the shipped files and the tests' files, and the
# values of an attribute (expressions, shader texts) in scene files.
collect() {  # <seed folder> <pattern>...
  local out=$1 pattern file attr glob n=0
  shift
  rm -rf "$out" && mkdir -p "$out"
  for pattern in "$@"; do
    if [[ $pattern == attr:* ]]; then
      IFS=: read -r _ attr glob <<<"$pattern"
      for file in $root/$glob; do
        [ -f "$file" ] && python3 - "$file" "$attr" "$out/$(basename "$file")" <<'PY'
import sys, xml.etree.ElementTree as et
for i, e in enumerate(x for x in et.parse(sys.argv[1]).iter() if sys.argv[2] in x.attrib):
    open(f"{sys.argv[3]}.{i}", "w").write(e.attrib[sys.argv[2]])
PY
      done
    else
      for file in $root/$pattern; do
        [ -f "$file" ] && cp "$file" "$out/$((n++))-$(basename "$file")"
      done
    fi
  done
}

run() {  # <name> <dict> <pattern>...
  local name=$1 dict=$2 log="$dir/logs/$1.log"
  shift 2
  collect "$dir/seeds/$name" "$@"
  mkdir -p "$dir/corpus/$name" "$dir/crashes" "$dir/logs"
  if nice -n 10 "$dir/tests/fuzz/$name" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -dict="$root/tests/fuzz/$dict" -print_final_stats=1 -artifact_prefix="$dir/crashes/$name-" \
    "$dir/corpus/$name" "$dir/seeds/$name" >"$log" 2>&1; then
    local execs cov
    execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    cov=$(grep -oE 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -1)
    echo "fuzz: $name: ${execs:-?} executions in ${seconds} s, $cov"
  else
    echo "fuzz: $name FAILED, see $log and $dir/crashes/" >&2
    grep -E 'ERROR|SUMMARY|Test unit written' "$log" | head -5 >&2
    return 1
  fi
}

status=0
pids=()
while IFS='|' read -r name dict seeds; do
  [ -n "$name" ] || continue
  if [ $# -gt 0 ] && [[ " $* " != *" $name "* ]]; then continue; fi
  # shellcheck disable=SC2086
  run "$name" "$dict" $seeds &
  pids+=($!)
  if [ ${#pids[@]} -ge "${VELMOR_FUZZ_PARALLEL:-1}" ]; then
    wait "${pids[0]}" || status=1
    pids=("${pids[@]:1}")
  fi
done <"$dir/fuzz_targets.txt"
for pid in "${pids[@]}"; do wait "$pid" || status=1; done
exit $status
