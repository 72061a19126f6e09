#!/usr/bin/env bash
# The main job on a sample drawing: read a real drawing, show what it holds,
# select by sample in ryad with the kestrix module, and check the saved
# drawing with the independent reader.
set -euo pipefail
build=${1:-build}
corpus=${2:-../shared/corpus}
drawing="$corpus/examples_dxf_xclip.dxf"
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

echo "== What the drawing holds (dxfcheck)"
"$build/bin/dxfcheck" "$drawing" "$out/copy.dxf"

echo
echo "== Selection by sample in ryad (examples/select-by-sample.scr)"
"$build/bin/ryad" --script examples/select-by-sample.scr --output "$out/session.dxf" "$drawing"

if /usr/bin/python3 -c 'import ezdxf' 2>/dev/null; then
  echo
  echo "== The independent reader's view of the saved drawing"
  /usr/bin/python3 "$corpus/../tools/dxf_same_entities.py" "$drawing" "$out/session.dxf"
fi

echo
echo "== A picture of the drawing worked on (ryad --plot)"
mkdir -p "$build/demo"
"$build/bin/ryad" --plot "$build/demo/session.png" "$out/session.dxf"
echo "The picture is $(cd "$build/demo" && pwd)/session.png"
