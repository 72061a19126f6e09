# The independent reader's comparison of two DXF files, with both files
# loaded the same way (ezdxf.readfile). Used for binary originals: the
# shared check loads a binary original with readfile but an ASCII copy with
# the recover loader, and for R13/R14 drawings the two loaders create the
# objects of the version upgrade (arrow blocks, dropped empty tables) with
# different handles. Usage: python3 same_entities_one_loader.py ORIGINAL WRITTEN
import sys, ezdxf

def load(path):
    doc = ezdxf.readfile(path)
    errors = len(doc.audit().errors)
    spaces = {blk.name.upper(): sorted(str((e.dxftype(), e.dxf.get("handle"))) for e in blk) for blk in doc.blocks}
    return errors, spaces

ea, sa = load(sys.argv[1])
eb, sb = load(sys.argv[2])
problems = []
if eb > ea:
    problems.append(f"audit errors {ea} -> {eb}")
for name, ents in sa.items():
    if name not in sb:
        problems.append(f"block {name} missing")
    elif ents != sb[name]:
        problems.append(f"block {name}: entities or handles differ")
print("; ".join(problems[:3]) if problems else "same")
sys.exit(1 if problems else 0)
