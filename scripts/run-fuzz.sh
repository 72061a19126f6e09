#!/usr/bin/env bash
# Runs a reader's fuzz target for a fixed number of runs, seeded from the
# small drawings of a corpus folder whose names match the pattern (DXF
# drawings unless another is given) and at most MAXKB kilobytes (40 unless
# another is given; inputs may grow to that size). Fails when the target
# finds a fault.
#   run-fuzz.sh TARGET FOLDER [RUNS] [PATTERN] [MAXKB]
set -euo pipefail
fuzzer=$(realpath "$1")
corpus=$(realpath "$2")
runs=${3:-4000}
pattern=${4:-*.dxf}
maxkb=${5:-40}
if [ ! -x "$fuzzer" ]; then
  echo "fuzz target $fuzzer not built (needs clang with libFuzzer)" >&2
  exit 1
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/seeds"
find "$corpus" -maxdepth 1 -iname "$pattern" -size "-${maxkb}k" -exec cp {} "$work/seeds/" \;
cd "$work"
"$fuzzer" -runs="$runs" -max_len=$((maxkb * 1000)) -seed=1 -rss_limit_mb=2048 -timeout=20 seeds
