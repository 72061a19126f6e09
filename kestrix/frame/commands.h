// The module's command table: every registration, in order, with its group,
// global name, local-name string number, flags and handler; and the
// handlers, each written in its subsystem's folder.
#pragma once

#include <vector>

#include "OdEdCommandStack.h"

struct KestrixCommand {
  const wchar_t* group;
  const wchar_t* globalName;
  unsigned int localNameId;  // string number in the local-name library
  OdInt32 flags;
  RyCommandFunction handler;
};

// The 184 registrations, in registration order.
const std::vector<KestrixCommand>& kestrixCommandTable();

// The groups, in the order they are removed at unload.
const std::vector<const wchar_t*>& kestrixCommandGroupsInRemovalOrder();

// ---- Handlers

// Registered commands whose tools are not in this version: one line, no change.
void notAvailableCommand();

// Attribute export and import (blocks/AttributeExport.cpp, blocks/AttributeImport.cpp).
void attoutCommand();
void attinCommand();

// Block replacement (blocks/BlockReplace.cpp).
void blockreplaceCommand();

// Drawing comparison (compare/Compare.cpp).
void CmpCommand();
void cmpCommandLine();

// Selection by sample (frame/SelectionBySample.cpp).
void getselCommand();
void getBlkSelCommand();
void getEntSelCommand();
void getLaySelCommand();
void getColSelCommand();
void getEntLaySelCommand();
void getEntColSelCommand();
void getLayColSelCommand();

// Boolean operations on closed outlines (regions/BoolOp.cpp).
void boolopCommand();

// A linetype made from drawn geometry (linetypes/LinetypeMaker.cpp).
void mkltypeCommand();

// Text adjustment (text/TextCase.cpp, TextJustify.cpp, TextOrient.cpp,
// TextCount.cpp, TextFit.cpp, TextCircle.cpp).
void tcaseCommand();
void tjustCommand();
void torientCommand();
void tcountCommand();
void textfitCommand();
void tcircleCommand();

// Duplicate removal and the break line (curves/Overkill.cpp, curves/BreakLine.cpp).
void overkillCommand();
void breaklineCommand();

// Burst and block count (blocks/Burst.cpp, blocks/BlockCount.cpp).
void burstCommand();
void bcountCommand();

// Layer tools (layers/LayerIsolation.cpp, layers/LayerMove.cpp, layers/LayerColor.cpp,
// layers/LayerDrawOrder.cpp).
void layoffotherCommand();
void layfrzotherCommand();
void laylckotherCommand();
void laymoveCommand();
void laychgcolorCommand();
void laydraworderCommand();

// Text masks and text to multiline text (text/TextMask.cpp, text/TextToMText.cpp).
void textmaskCommand();
void textunmaskCommand();
void txt2mtxtCommand();

// The system-variable dialog (linetypes/SysVarDialog.cpp).
void sysvdlgCommand();

// Batch file tools: plotting (batch/BatchPlot.cpp), purging (batch/BatchPurge.cpp)
// and moving backup files (batch/MoveBackups.cpp).
void printPltCommand();
void batchPlotCommand();
void batchPurgeCommand();
void moveBackupsCommand();
