#!/usr/bin/env bash
# Runs the DXF reader's fuzz target for a fixed number of runs, seeded from
# the small drawings of the corpus. Fails when the target finds a fault.
set -euo pipefail
fuzzer=$(realpath "$1")
corpus=$(realpath "$2")
runs=${3:-4000}
if [ ! -x "$fuzzer" ]; then
  echo "fuzz target $fuzzer not built (needs clang with libFuzzer)" >&2
  exit 1
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/seeds"
find "$corpus" -maxdepth 1 -iname '*.dxf' -size -40k -exec cp {} "$work/seeds/" \;
cd "$work"
"$fuzzer" -runs="$runs" -max_len=40000 -seed=1 -rss_limit_mb=2048 -timeout=20 seeds
