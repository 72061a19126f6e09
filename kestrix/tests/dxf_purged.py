# Checks a purged drawing against its original as an independent reader
# (ezdxf) sees them: every layout holds the same entities (type and handle),
# every block left holds what it held, no new audit errors, and each record
# named on the command line ("layer:NAME", "block:NAME", "ltype:NAME",
# "style:NAME", "dimstyle:NAME") is gone from the purged file while present
# in the original. Prints "same" and exits 0, or what differs and exits 1.
# Usage: /usr/bin/python3 dxf_purged.py ORIGINAL.dxf PURGED.dxf [kind:NAME...]
import sys, ezdxf

def load(path):
    doc = ezdxf.readfile(path)
    errors = len(doc.audit().errors)
    blocks = {b.name.upper(): sorted((e.dxftype(), e.dxf.handle) for e in b) for b in doc.blocks}
    return doc, errors, blocks

a, b = sys.argv[1], sys.argv[2]
da, ea, ba = load(a)
db, eb, bb = load(b)
problems = []
if eb > ea:
    problems.append(f"audit errors {ea} -> {eb}")
for layout in da.layouts:
    name = layout.name
    want = sorted((e.dxftype(), e.dxf.handle) for e in layout)
    got = sorted((e.dxftype(), e.dxf.handle) for e in db.layouts.get(name)) if name in db.layouts else None
    if got != want:
        problems.append(f"layout {name}: entities differ")
for name, ents in bb.items():
    if ba.get(name) != ents:
        problems.append(f"block {name}: entities differ or new")
tables = {"layer": "layers", "block": "blocks", "ltype": "linetypes", "style": "styles", "dimstyle": "dimstyles"}
for item in sys.argv[3:]:
    kind, name = item.split(":", 1)
    if name not in getattr(da, tables[kind]):
        problems.append(f"{item} not in the original")
    if name in getattr(db, tables[kind]):
        problems.append(f"{item} still there")
print("; ".join(problems[:4]) if problems else "same")
sys.exit(1 if problems else 0)
