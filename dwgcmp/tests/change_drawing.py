# Makes two versions of a drawing with ezdxf, for the comparison engine's
# tests: OLD is the drawing as ezdxf writes it, NEW the same drawing changed.
# Usage: python3 change_drawing.py SOURCE.dxf OLD.dxf NEW.dxf MODE
#   edits:  one LINE erased, one LINE moved, one CIRCLE recoloured, one TEXT
#           edited, one CIRCLE added
#   redraw: one LINE erased and drawn again alike (a new handle), one LINE
#           moved by less than the tolerance 0.0001
#   rehandle: every entity of model space copied under a new handle, in
#           reverse order, and the original erased
#   attrib: the first attribute of the first block reference edited
#   block:  a block CMPTEST (a circle) and a reference to it are added to
#           both; in NEW the circle in the block is moved
# Prints one line per change: what was done and the handle it was done to.
import sys
import ezdxf

source, old_path, new_path, mode = sys.argv[1:5]
doc = ezdxf.readfile(source)
msp = doc.modelspace()
if mode == "block":
    block = doc.blocks.new("CMPTEST")
    circle = block.add_circle((0, 0), 1)
    print("reference", msp.add_blockref("CMPTEST", (100, 100)).dxf.handle)
doc.saveas(old_path)
lines = msp.query("LINE")
if mode == "edits":
    erased, moved = lines[0], lines[1]
    print("erased", erased.dxf.handle)
    msp.delete_entity(erased)
    moved.dxf.start = moved.dxf.start + (5, 0, 0)
    moved.dxf.end = moved.dxf.end + (5, 0, 0)
    print("moved", moved.dxf.handle)
    circle = msp.query("CIRCLE")[0]
    circle.dxf.color = 5 if circle.dxf.color != 5 else 4
    print("recoloured", circle.dxf.handle)
    text = msp.query("TEXT")[0]
    text.dxf.text = text.dxf.text + " (edited)"
    print("edited", text.dxf.handle)
    added = msp.add_circle((1234.5, 678.9), 4.25)
    print("added", added.dxf.handle)
elif mode == "redraw":
    redrawn = lines[0]
    copy = msp.add_line(redrawn.dxf.start, redrawn.dxf.end, dxfattribs={"layer": redrawn.dxf.layer, "color": redrawn.dxf.color})
    print("erased", redrawn.dxf.handle)
    print("added", copy.dxf.handle)
    msp.delete_entity(redrawn)
    nudged = lines[1]
    nudged.dxf.start = nudged.dxf.start + (0.00002, 0, 0)
    print("nudged", nudged.dxf.handle)
elif mode == "rehandle":
    for entity in reversed(list(msp)):
        msp.add_entity(entity.copy())
        msp.delete_entity(entity)
    print("entities", len(msp))
elif mode == "attrib":
    reference = msp.query("INSERT")[0]
    attribute = reference.attribs[0]
    attribute.dxf.text = attribute.dxf.text + " (edited)"
    print("reference", reference.dxf.handle)
    print("attribute", attribute.dxf.handle)
elif mode == "block":
    circle.dxf.center = (0.5, 0)
doc.saveas(new_path)
