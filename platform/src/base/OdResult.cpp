#include "OdResult.h"
#include "RxObject.h"

#include <iterator>

namespace {
struct ResultText {
  OdResult code;
  const wchar_t* name;
  const wchar_t* text;
};

const ResultText kResultTexts[] = {
    {eOk, L"eOk", L"No error"},
    {eNotImplementedYet, L"eNotImplementedYet", L"Not implemented"},
    {eNotApplicable, L"eNotApplicable", L"Not applicable"},
    {eInvalidInput, L"eInvalidInput", L"Invalid input"},
    {eAmbiguousInput, L"eAmbiguousInput", L"Ambiguous input"},
    {eAmbiguousOutput, L"eAmbiguousOutput", L"Ambiguous output"},
    {eOutOfMemory, L"eOutOfMemory", L"Out of memory"},
    {eBufferTooSmall, L"eBufferTooSmall", L"Buffer too small"},
    {eInvalidOpenState, L"eInvalidOpenState", L"Invalid open state"},
    {eEntityInInactiveLayout, L"eEntityInInactiveLayout", L"Entity in inactive layout"},
    {eHandleExists, L"eHandleExists", L"Handle exists"},
    {eNullHandle, L"eNullHandle", L"Null handle"},
    {eBrokenHandle, L"eBrokenHandle", L"Broken handle"},
    {eUnknownHandle, L"eUnknownHandle", L"Unknown handle"},
    {eHandleInUse, L"eHandleInUse", L"The handle is already in use"},
    {eNullObjectPointer, L"eNullObjectPointer", L"Null object pointer"},
    {eNullObjectId, L"eNullObjectId", L"Null object id"},
    {eNullBlockName, L"eNullBlockName", L"Null block name"},
    {eContainerNotEmpty, L"eContainerNotEmpty", L"Container not empty"},
    {eNullEntityPointer, L"eNullEntityPointer", L"Null entity pointer"},
    {eIllegalEntityType, L"eIllegalEntityType", L"Illegal entity type"},
    {eKeyNotFound, L"eKeyNotFound", L"The key was not found"},
    {eDuplicateKey, L"eDuplicateKey", L"The key is already in use"},
    {eInvalidIndex, L"eInvalidIndex", L"Invalid index"},
    {eDuplicateIndex, L"eDuplicateIndex", L"Duplicate index"},
    {eAlreadyInDb, L"eAlreadyInDb", L"The object is already in a database"},
    {eOutOfDisk, L"eOutOfDisk", L"Out of disk"},
    {eDeletedEntry, L"eDeletedEntry", L"Deleted entry"},
    {eNegativeValueNotAllowed, L"eNegativeValueNotAllowed", L"Negative value not allowed"},
    {eInvalidExtents, L"eInvalidExtents", L"Invalid extents"},
    {eInvalidAdsName, L"eInvalidAdsName", L"Invalid ads name"},
    {eInvalidSymbolTableName, L"eInvalidSymbolTableName", L"Invalid symbol table name"},
    {eInvalidKey, L"eInvalidKey", L"Invalid key"},
    {eWrongObjectType, L"eWrongObjectType", L"Wrong object type"},
    {eWrongDatabase, L"eWrongDatabase", L"Wrong database"},
    {eObjectToBeDeleted, L"eObjectToBeDeleted", L"Object to be deleted"},
    {eInvalidDwgVersion, L"eInvalidDwgVersion", L"Invalid dwg version"},
    {eAnonymousEntry, L"eAnonymousEntry", L"Anonymous entry"},
    {eIllegalReplacement, L"eIllegalReplacement", L"Illegal replacement"},
    {eEndOfObject, L"eEndOfObject", L"End of object"},
    {eEndOfFile, L"eEndOfFile", L"Unexpected end of file"},
    {eIsReading, L"eIsReading", L"Is reading"},
    {eIsWriting, L"eIsWriting", L"Is writing"},
    {eNotOpenForRead, L"eNotOpenForRead", L"Not open for read"},
    {eNotOpenForWrite, L"eNotOpenForWrite", L"The object is not open for writing"},
    {eNotThatKindOfClass, L"eNotThatKindOfClass", L"Not that kind of class"},
    {eInvalidBlockName, L"eInvalidBlockName", L"Invalid block name"},
    {eMissingDxfField, L"eMissingDxfField", L"Missing dxf field"},
    {eDuplicateDxfField, L"eDuplicateDxfField", L"Duplicate dxf field"},
    {eInvalidDxfCode, L"eInvalidDxfCode", L"Invalid DXF group code"},
    {eInvalidResBuf, L"eInvalidResBuf", L"Invalid res buf"},
    {eBadDxfSequence, L"eBadDxfSequence", L"Bad sequence of DXF groups"},
    {eFilerError, L"eFilerError", L"Filer error"},
    {eVertexAfterFace, L"eVertexAfterFace", L"Vertex after face"},
    {eInvalidFaceVertexIndex, L"eInvalidFaceVertexIndex", L"Invalid face vertex index"},
    {eInvalidMeshVertexIndex, L"eInvalidMeshVertexIndex", L"Invalid mesh vertex index"},
    {eOtherObjectsBusy, L"eOtherObjectsBusy", L"Other objects busy"},
    {eMustFirstAddBlockToDb, L"eMustFirstAddBlockToDb", L"Must first add block to db"},
    {eCannotNestBlockDefs, L"eCannotNestBlockDefs", L"Cannot nest block defs"},
    {eDwgRecoveredOK, L"eDwgRecoveredOK", L"Dwg recovered o k"},
    {eDwgNotRecoverable, L"eDwgNotRecoverable", L"Dwg not recoverable"},
    {eDxfPartiallyRead, L"eDxfPartiallyRead", L"Dxf partially read"},
    {eDxfReadAborted, L"eDxfReadAborted", L"The DXF file could not be read"},
    {eDxbPartiallyRead, L"eDxbPartiallyRead", L"Dxb partially read"},
    {eDwgCRCDoesNotMatch, L"eDwgCRCDoesNotMatch", L"Dwg c r c does not match"},
    {eDwgSentinelDoesNotMatch, L"eDwgSentinelDoesNotMatch", L"Dwg sentinel does not match"},
    {eDwgObjectImproperlyRead, L"eDwgObjectImproperlyRead", L"Dwg object improperly read"},
    {eNoInputFiler, L"eNoInputFiler", L"No input filer"},
    {eDwgNeedsAFullSave, L"eDwgNeedsAFullSave", L"Dwg needs a full save"},
    {eDxbReadAborted, L"eDxbReadAborted", L"Dxb read aborted"},
    {eFileLockedByACAD, L"eFileLockedByACAD", L"File locked by a c a d"},
    {eFileAccessErr, L"eFileAccessErr", L"File access err"},
    {eFileSystemErr, L"eFileSystemErr", L"File system err"},
    {eFileInternalErr, L"eFileInternalErr", L"File internal err"},
    {eFileTooManyOpen, L"eFileTooManyOpen", L"File too many open"},
    {eFileNotFound, L"eFileNotFound", L"File not found"},
    {eDwkLockFileFound, L"eDwkLockFileFound", L"Dwk lock file found"},
    {eWasErased, L"eWasErased", L"The object was erased"},
    {ePermanentlyErased, L"ePermanentlyErased", L"Permanently erased"},
    {eWasOpenedForRead, L"eWasOpenedForRead", L"The object is already open for reading"},
    {eWasOpenedForWrite, L"eWasOpenedForWrite", L"The object is already open for writing"},
    {eWasOpenedForUndo, L"eWasOpenedForUndo", L"Was opened for undo"},
    {eWasNotifying, L"eWasNotifying", L"Was notifying"},
    {eWasOpenedForNotify, L"eWasOpenedForNotify", L"Was opened for notify"},
    {eOnLockedLayer, L"eOnLockedLayer", L"The object is on a locked layer"},
    {eMustOpenThruOwner, L"eMustOpenThruOwner", L"Must open thru owner"},
    {eSubentitiesStillOpen, L"eSubentitiesStillOpen", L"Subentities still open"},
    {eAtMaxReaders, L"eAtMaxReaders", L"At max readers"},
    {eIsWriteProtected, L"eIsWriteProtected", L"Is write protected"},
    {eIsXRefObject, L"eIsXRefObject", L"Is x ref object"},
    {eNotAnEntity, L"eNotAnEntity", L"Not an entity"},
    {eHadMultipleReaders, L"eHadMultipleReaders", L"Had multiple readers"},
    {eDuplicateRecordName, L"eDuplicateRecordName", L"A record of that name already exists"},
    {eXRefDependent, L"eXRefDependent", L"X ref dependent"},
    {eSelfReference, L"eSelfReference", L"The block refers to itself"},
    {eMissingSymbolTable, L"eMissingSymbolTable", L"Missing symbol table"},
    {eMissingSymbolTableRec, L"eMissingSymbolTableRec", L"Missing symbol table rec"},
    {eWasNotOpenForWrite, L"eWasNotOpenForWrite", L"Was not open for write"},
    {eCloseWasNotifying, L"eCloseWasNotifying", L"Close was notifying"},
    {eCloseModifyAborted, L"eCloseModifyAborted", L"Close modify aborted"},
    {eClosePartialFailure, L"eClosePartialFailure", L"Close partial failure"},
    {eCloseFailObjectDamaged, L"eCloseFailObjectDamaged", L"Close fail object damaged"},
    {eCannotBeErasedByCaller, L"eCannotBeErasedByCaller", L"Cannot be erased by caller"},
    {eCannotBeResurrected, L"eCannotBeResurrected", L"Cannot be resurrected"},
    {eWasNotErased, L"eWasNotErased", L"Was not erased"},
    {eInsertAfter, L"eInsertAfter", L"Insert after"},
    {eFixedAllErrors, L"eFixedAllErrors", L"Fixed all errors"},
    {eLeftErrorsUnfixed, L"eLeftErrorsUnfixed", L"Left errors unfixed"},
    {eUnrecoverableErrors, L"eUnrecoverableErrors", L"Unrecoverable errors"},
    {eNoDatabase, L"eNoDatabase", L"No database"},
    {eXdataSizeExceeded, L"eXdataSizeExceeded", L"Xdata size exceeded"},
    {eRegappIdNotFound, L"eRegappIdNotFound", L"Regapp id not found"},
    {eRepeatEntity, L"eRepeatEntity", L"Repeat entity"},
    {eRecordNotInTable, L"eRecordNotInTable", L"Record not in table"},
    {eIteratorDone, L"eIteratorDone", L"The iteration is finished"},
    {eNullIterator, L"eNullIterator", L"Null iterator"},
    {eNotInBlock, L"eNotInBlock", L"Not in block"},
    {eOwnerNotInDatabase, L"eOwnerNotInDatabase", L"Owner not in database"},
    {eOwnerNotOpenForRead, L"eOwnerNotOpenForRead", L"Owner not open for read"},
    {eOwnerNotOpenForWrite, L"eOwnerNotOpenForWrite", L"Owner not open for write"},
    {eExplodeBeforeTransform, L"eExplodeBeforeTransform", L"Explode before transform"},
    {eCannotScaleNonUniformly, L"eCannotScaleNonUniformly", L"The object cannot be scaled non-uniformly"},
    {eNotInDatabase, L"eNotInDatabase", L"The object is not in a database"},
    {eNotCurrentDatabase, L"eNotCurrentDatabase", L"Not current database"},
    {eIsAnEntity, L"eIsAnEntity", L"Is an entity"},
    {eCannotChangeActiveViewport, L"eCannotChangeActiveViewport", L"Cannot change active viewport"},
    {eNotInPaperspace, L"eNotInPaperspace", L"Not in paperspace"},
    {eCommandWasInProgress, L"eCommandWasInProgress", L"Command was in progress"},
    {eGeneralModelingFailure, L"eGeneralModelingFailure", L"General modeling failure"},
    {eOutOfRange, L"eOutOfRange", L"Value out of range"},
    {eNonCoplanarGeometry, L"eNonCoplanarGeometry", L"Non coplanar geometry"},
    {eDegenerateGeometry, L"eDegenerateGeometry", L"Degenerate geometry"},
    {eInvalidAxis, L"eInvalidAxis", L"Invalid axis"},
    {ePointNotOnEntity, L"ePointNotOnEntity", L"Point not on entity"},
    {eSingularPoint, L"eSingularPoint", L"Singular point"},
    {eInvalidOffset, L"eInvalidOffset", L"Invalid offset"},
    {eNonPlanarEntity, L"eNonPlanarEntity", L"Non planar entity"},
    {eCannotExplodeEntity, L"eCannotExplodeEntity", L"The object cannot be exploded"},
    {eStringTooLong, L"eStringTooLong", L"String too long"},
    {eInvalidSymTableFlag, L"eInvalidSymTableFlag", L"Invalid sym table flag"},
    {eUndefinedLineType, L"eUndefinedLineType", L"Undefined line type"},
    {eInvalidTextStyle, L"eInvalidTextStyle", L"Invalid text style"},
    {eTooFewLineTypeElements, L"eTooFewLineTypeElements", L"Too few line type elements"},
    {eTooManyLineTypeElements, L"eTooManyLineTypeElements", L"Too many line type elements"},
    {eExcessiveItemCount, L"eExcessiveItemCount", L"Excessive item count"},
    {eIgnoredLinetypeRedef, L"eIgnoredLinetypeRedef", L"Ignored linetype redef"},
    {eBadUCS, L"eBadUCS", L"Bad u c s"},
    {eBadPaperspaceView, L"eBadPaperspaceView", L"Bad paperspace view"},
    {eSomeInputDataLeftUnread, L"eSomeInputDataLeftUnread", L"Some input data left unread"},
    {eNoInternalSpace, L"eNoInternalSpace", L"No internal space"},
    {eInvalidDimStyle, L"eInvalidDimStyle", L"Invalid dim style"},
    {eInvalidLayer, L"eInvalidLayer", L"Invalid layer"},
    {eUserBreak, L"eUserBreak", L"Cancelled by the user"},
    {eUserCancel, L"eUserCancel", L"User cancel"},
    {eNotAllowedForThisProxy, L"eNotAllowedForThisProxy", L"Not allowed for this proxy"},
    {eCantOpenFile, L"eCantOpenFile", L"Can't open the file"},
    {eFileWriteError, L"eFileWriteError", L"The file could not be written"},
    {eNotThatKindOfFile, L"eNotThatKindOfFile", L"Not a drawing file of a known kind"},
    {eSyntaxError, L"eSyntaxError", L"Syntax error"},
};

const ResultText* lookup(OdResult code) {
  for (const auto& entry : kResultTexts) {
    if (entry.code == code) return &entry;
  }
  return nullptr;
}
}  // namespace

const wchar_t* odResultName(OdResult result) {
  const ResultText* entry = lookup(result);
  return entry ? entry->name : L"eUnknownResult";
}

OdString odResultDescription(OdResult result) {
  const ResultText* entry = lookup(result);
  if (entry) return entry->text;
  return OdString().format(L"Error %d", static_cast<int>(result));
}

OdString OdError::description() const {
  OdString text = odResultDescription(m_code);
  if (!m_explanation.isEmpty()) text += L": " + m_explanation;
  return text;
}

const char* OdError::what() const noexcept {
  m_what = description().toUtf8();
  return m_what.c_str();
}

OdError_NotThatKindOfClass::OdError_NotThatKindOfClass(const OdRxClass* objectClass, const OdRxClass* wantedClass)
    : OdError(eNotThatKindOfClass, OdString(objectClass ? objectClass->name() : OdString(L"?")) + L" is not a " +
                                       (wantedClass ? wantedClass->name() : OdString(L"?"))) {}
