"""Lists the closed outlines of a DXF file's model space as an independent
reader sees them: one line per LWPOLYLINE or CIRCLE with its layer, colour,
linetype, lineweight, vertex count, bulges and enclosed area. The first line
is the number of errors the audit found.

    python3 dxf_outlines.py FILE
"""
import math
import sys

import ezdxf


def polyline_area(points):
    """Area of a closed bulged polyline: the polygon plus each arc's segment."""
    area = 0.0
    n = len(points)
    for i in range(n):
        x0, y0, b = points[i]
        x1, y1, _ = points[(i + 1) % n]
        area += (x0 * y1 - x1 * y0) / 2.0
        if b:
            theta = 4.0 * math.atan(b)
            chord = math.hypot(x1 - x0, y1 - y0)
            radius = chord / (2.0 * math.sin(theta / 2.0))
            area += radius * radius * (theta - math.sin(theta)) / 2.0
    return abs(area)


def main(path):
    doc = ezdxf.readfile(path)
    auditor = doc.audit()
    print(f"errors {len(auditor.errors)}")
    for entity in doc.modelspace():
        kind = entity.dxftype()
        common = (f"layer={entity.dxf.layer} color={entity.dxf.color} "
                  f"linetype={entity.dxf.linetype} lineweight={entity.dxf.lineweight}")
        if kind == "LWPOLYLINE":
            points = [(x, y, b) for x, y, _, _, b in entity.get_points("xyseb")]
            bulges = ",".join(f"{b:.6f}" for _, _, b in points)
            print(f"LWPOLYLINE {common} closed={int(entity.closed)} vertices={len(points)} "
                  f"bulges={bulges} area={polyline_area(points):.9f}")
        elif kind == "CIRCLE":
            c = entity.dxf.center
            print(f"CIRCLE {common} center={c.x:.6f},{c.y:.6f} radius={entity.dxf.radius:.9f} "
                  f"area={math.pi * entity.dxf.radius ** 2:.9f}")
        else:
            print(kind)


if __name__ == "__main__":
    main(sys.argv[1])
