#!/usr/bin/env bash
# Runs every benchmark program and prints its figures.
set -euo pipefail
build=${1:-build}
for b in "$build"/bin/bench_*; do
  [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  "$b"
done
