# Prints what an independent reader (ezdxf) sees in a DXF file's model space:
# the audit error count, then one line per entity with its geometry rounded
# to 6 decimals, sorted, so that two drawings with the same geometry print
# the same text whatever the order or handles of their entities. Lines are
# printed with their end points in sorted order (a line drawn backwards is
# the same line). Run with /usr/bin/python3 (Debian's python3-ezdxf).
import sys
import ezdxf


def r(v):
    return round(float(v) + 0.0, 6) + 0.0


def p(v):
    return tuple(r(c) for c in v)


doc = ezdxf.readfile(sys.argv[1])
print("audit errors", len(doc.audit().errors))
rows = []
for e in doc.modelspace():
    t, d = e.dxftype(), e.dxf
    if t == "LINE":
        rows.append((t, d.layer, tuple(sorted([p(d.start), p(d.end)]))))
    elif t == "ARC":
        rows.append((t, d.layer, p(d.center), r(d.radius), round(d.start_angle % 360, 4), round(d.end_angle % 360, 4)))
    elif t == "CIRCLE":
        rows.append((t, d.layer, p(d.center), r(d.radius)))
    elif t == "LWPOLYLINE":
        rows.append((t, d.layer, e.closed, tuple(p(v) for v in e.get_points("xyb"))))
    elif t == "POLYLINE":
        rows.append((t, d.layer, e.is_closed, tuple(p(v.dxf.location) for v in e.vertices)))
    elif t in ("TEXT", "MTEXT"):
        rows.append((t, d.layer, e.plain_text() if t == "MTEXT" else d.text, p(d.insert)))
    else:
        rows.append((t, d.layer))
for row in sorted(rows, key=repr):
    print(row)
