#!/usr/bin/env bash
# The main job on a sample drawing.
set -euo pipefail
build=${1:-build}
corpus=${2:-../shared/corpus}
echo "demo: nothing to run yet"
