#!/usr/bin/env bash
# The main job on a sample drawing: read a real drawing, show what it holds,
# select by sample and run a tour of the tools in ryad with the kestrix
# module, check the saved drawings with the independent reader, and plot
# them.
set -euo pipefail
build=${1:-build}
corpus=${2:-../shared/corpus}
drawing="$corpus/examples_dxf_xclip.dxf"
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

# The independent reader's audit of a saved drawing and its model space by type.
show_audit() {
  /usr/bin/python3 -c 'import ezdxf' 2>/dev/null || return 0
  echo
  echo "== The independent reader's view of $2"
  /usr/bin/python3 - "$1" <<'PY'
import collections, sys, ezdxf
doc = ezdxf.readfile(sys.argv[1])
print("audit errors:", len(doc.audit().errors))
counts = collections.Counter(e.dxftype() for e in doc.modelspace())
print("model space:", ", ".join(f"{n} {kind}" for kind, n in sorted(counts.items())))
PY
}

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
echo "== The tools on the same drawing (examples/tools-tour.scr)"
"$build/bin/ryad" --script examples/tools-tour.scr --output "$out/tour.dxf" "$drawing"

show_audit "$out/tour.dxf" "the toured drawing"

echo
echo "== A DWG drawing (R2007) in ryad, saved as DXF (examples/dwg-drawing.scr)"
dwg="$corpus/dwg/example_2007.dwg"
"$build/bin/ryad" --script examples/dwg-drawing.scr --output "$out/dwg.dxf" "$dwg"
show_audit "$out/dwg.dxf" "the DWG drawing saved as DXF"

echo
echo "== Pictures of the drawings worked on (ryad --plot)"
mkdir -p "$build/demo"
"$build/bin/ryad" --plot "$build/demo/session.png" "$out/session.dxf"
"$build/bin/ryad" --plot "$build/demo/tour.png" "$out/tour.dxf"
"$build/bin/ryad" --plot "$build/demo/dwg.png" "$out/dwg.dxf"
echo "The pictures are $(cd "$build/demo" && pwd)/session.png, tour.png and dwg.png"
