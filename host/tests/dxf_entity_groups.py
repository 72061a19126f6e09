# The groups of every entity of a DXF file's ENTITIES and BLOCKS sections as
# an independent reader (ezdxf's tag loader) reads them: for each entity a
# line "@HANDLE", then one line "CODE<TAB>VALUE" per group, values as text.
# Usage: /usr/bin/python3 dxf_entity_groups.py FILE.dxf
import sys
from ezdxf.filemanagement import dxf_file_info
from ezdxf.lldxf.tagger import ascii_tags_loader

path = sys.argv[1]
encoding = dxf_file_info(path).encoding
out = []
with open(path, encoding=encoding, errors="surrogateescape") as stream:
    section = None
    entity = None
    expect_section_name = False
    for tag in ascii_tags_loader(stream):
        code, value = tag.code, tag.value
        if code == 0:
            entity = None
            if value == "SECTION":
                expect_section_name = True
            elif value == "ENDSEC":
                section = None
            elif section in ("ENTITIES", "BLOCKS") and value not in ("BLOCK", "ENDBLK"):
                entity = [(0, value)]
                out.append(entity)
            continue
        if expect_section_name and code == 2:
            section = value
            expect_section_name = False
            continue
        if entity is not None:
            entity.append((code, value))

lines = []
for entity in out:
    handle = next((v for c, v in entity if c == 5), None)
    if handle is None:
        continue
    lines.append("@" + handle.upper())
    lines.extend(f"{c}\t{v}" for c, v in entity)
sys.stdout.write("\n".join(lines) + "\n")
