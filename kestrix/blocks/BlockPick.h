// Picking a block reference in the drawing by its block's name, and the
// refusal of blocks that come from external references: shared by the
// block commands that let the user show a block instead of naming it.
#pragma once

#include "OdString.h"

namespace kestrix::blocks {

enum class BlockPick { kPicked, kNothing, kCancelled };

// Asks for a block reference: a direct pick on one, or a pick that missed
// and a crossing window (its first block reference is taken). A direct pick
// of a block whose name holds \ < > / ? " : ; * | , = or the reverse quote
// (anonymous blocks among them) is refused and asked again. Esc: kCancelled
// (the cancel message printed); Enter: kNothing. On kPicked, name holds the
// reference's block name.
BlockPick pickBlockReference(OdString& name);

// True, with the message printed, when the block of that name comes from an
// external reference.
bool isFromExternalReference(const OdString& name);

}  // namespace kestrix::blocks
