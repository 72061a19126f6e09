# Prints the entities of every layout of a DXF file as an independent reader
# (ezdxf) sees them, attributes after their reference: handle, type, layer, colour index and true colour (-1
# when none), one entity a line, tab-separated; then each layer as
# "layer:NAME", "layer", "on" or "off"; then "audit" and the number of
# audit errors. Usage: python3 dump_marks.py FILE.dxf
import sys
import ezdxf

doc = ezdxf.readfile(sys.argv[1])
def show(e):
    true_color = e.dxf.true_color if e.dxf.hasattr("true_color") else -1
    print(f"{e.dxf.handle}\t{e.dxftype()}\t{e.dxf.layer}\t{e.dxf.color}\t{true_color}")

for layout in doc.layouts:
    for e in layout:
        show(e)
        for attribute in getattr(e, "attribs", []):
            show(attribute)
for layer in doc.layers:
    print(f"layer:{layer.dxf.name}\tlayer\t{'off' if layer.is_off() else 'on'}\t0\t-1")
print(f"audit\t{len(doc.audit().errors)}")
