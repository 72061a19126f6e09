// Result codes of the drawing platform and the exception that carries them.
#pragma once

#include <exception>
#include <string>

#include "OdString.h"

enum OdResult : int {
  eOk = 0,
  eNotImplementedYet,
  eNotApplicable,
  eInvalidInput,
  eAmbiguousInput,
  eAmbiguousOutput,
  eOutOfMemory,
  eBufferTooSmall,
  eInvalidOpenState,
  eEntityInInactiveLayout,
  eHandleExists,
  eNullHandle,
  eBrokenHandle,
  eUnknownHandle,
  eHandleInUse,
  eNullObjectPointer,
  eNullObjectId,
  eNullBlockName,
  eContainerNotEmpty,
  eNullEntityPointer,
  eIllegalEntityType,
  eKeyNotFound,
  eDuplicateKey,
  eInvalidIndex,
  eDuplicateIndex,
  eAlreadyInDb,
  eOutOfDisk,
  eDeletedEntry,
  eNegativeValueNotAllowed,
  eInvalidExtents,
  eInvalidAdsName,
  eInvalidSymbolTableName,
  eInvalidKey,
  eWrongObjectType,
  eWrongDatabase,
  eObjectToBeDeleted,
  eInvalidDwgVersion,
  eAnonymousEntry,
  eIllegalReplacement,
  eEndOfObject,
  eEndOfFile,
  eIsReading,
  eIsWriting,
  eNotOpenForRead,
  eNotOpenForWrite,
  eNotThatKindOfClass,
  eInvalidBlockName,
  eMissingDxfField,
  eDuplicateDxfField,
  eInvalidDxfCode,
  eInvalidResBuf,
  eBadDxfSequence,
  eFilerError,
  eVertexAfterFace,
  eInvalidFaceVertexIndex,
  eInvalidMeshVertexIndex,
  eOtherObjectsBusy,
  eMustFirstAddBlockToDb,
  eCannotNestBlockDefs,
  eDwgRecoveredOK,
  eDwgNotRecoverable,
  eDxfPartiallyRead,
  eDxfReadAborted,
  eDxbPartiallyRead,
  eDwgCRCDoesNotMatch,
  eDwgSentinelDoesNotMatch,
  eDwgObjectImproperlyRead,
  eNoInputFiler,
  eDwgNeedsAFullSave,
  eDxbReadAborted,
  eFileLockedByACAD,
  eFileAccessErr,
  eFileSystemErr,
  eFileInternalErr,
  eFileTooManyOpen,
  eFileNotFound,
  eDwkLockFileFound,
  eWasErased,
  ePermanentlyErased,
  eWasOpenedForRead,
  eWasOpenedForWrite,
  eWasOpenedForUndo,
  eWasNotifying,
  eWasOpenedForNotify,
  eOnLockedLayer,
  eMustOpenThruOwner,
  eSubentitiesStillOpen,
  eAtMaxReaders,
  eIsWriteProtected,
  eIsXRefObject,
  eNotAnEntity,
  eHadMultipleReaders,
  eDuplicateRecordName,
  eXRefDependent,
  eSelfReference,
  eMissingSymbolTable,
  eMissingSymbolTableRec,
  eWasNotOpenForWrite,
  eCloseWasNotifying,
  eCloseModifyAborted,
  eClosePartialFailure,
  eCloseFailObjectDamaged,
  eCannotBeErasedByCaller,
  eCannotBeResurrected,
  eWasNotErased,
  eInsertAfter,
  eFixedAllErrors,
  eLeftErrorsUnfixed,
  eUnrecoverableErrors,
  eNoDatabase,
  eXdataSizeExceeded,
  eRegappIdNotFound,
  eRepeatEntity,
  eRecordNotInTable,
  eIteratorDone,
  eNullIterator,
  eNotInBlock,
  eOwnerNotInDatabase,
  eOwnerNotOpenForRead,
  eOwnerNotOpenForWrite,
  eExplodeBeforeTransform,
  eCannotScaleNonUniformly,
  eNotInDatabase,
  eNotCurrentDatabase,
  eIsAnEntity,
  eCannotChangeActiveViewport,
  eNotInPaperspace,
  eCommandWasInProgress,
  eGeneralModelingFailure,
  eOutOfRange,
  eNonCoplanarGeometry,
  eDegenerateGeometry,
  eInvalidAxis,
  ePointNotOnEntity,
  eSingularPoint,
  eInvalidOffset,
  eNonPlanarEntity,
  eCannotExplodeEntity,
  eStringTooLong,
  eInvalidSymTableFlag,
  eUndefinedLineType,
  eInvalidTextStyle,
  eTooFewLineTypeElements,
  eTooManyLineTypeElements,
  eExcessiveItemCount,
  eIgnoredLinetypeRedef,
  eBadUCS,
  eBadPaperspaceView,
  eSomeInputDataLeftUnread,
  eNoInternalSpace,
  eInvalidDimStyle,
  eInvalidLayer,
  eUserBreak,
  eUserCancel,
  eNotAllowedForThisProxy,
  eCantOpenFile,
  eFileWriteError,
  eNotThatKindOfFile,
  eSyntaxError,
  // An alias, last: an alias in the middle would give the codes after it the
  // values of others (a file that cannot be opened read as a bad block name).
  eNotThatKindOfClassResult = eNotThatKindOfClass,
};

// Short English name of a result code ("eWasErased").
const wchar_t* odResultName(OdResult result);
// A sentence that says what the code means, for messages to the user.
OdString odResultDescription(OdResult result);

// Exceptions thrown by the platform carry a result code and an optional
// explanation. Specialised kinds exist for the cases callers catch by type.
class OdError : public std::exception {
 public:
  explicit OdError(OdResult code) : m_code(code) {}
  OdError(OdResult code, const OdString& explanation) : m_code(code), m_explanation(explanation) {}
  explicit OdError(const OdString& explanation) : m_code(eInvalidInput), m_explanation(explanation) {}
  OdResult code() const { return m_code; }
  OdString description() const;
  const char* what() const noexcept override;

 private:
  OdResult m_code;
  OdString m_explanation;
  mutable std::string m_what;
};

class OdRxClass;

class OdError_NotThatKindOfClass : public OdError {
 public:
  OdError_NotThatKindOfClass() : OdError(eNotThatKindOfClass) {}
  OdError_NotThatKindOfClass(const OdRxClass* objectClass, const OdRxClass* wantedClass);
};

class OdError_FileException : public OdError {
 public:
  OdError_FileException(OdResult code, const OdString& fileName)
      : OdError(code, fileName), m_fileName(fileName) {}
  const OdString& fileName() const { return m_fileName; }

 private:
  OdString m_fileName;
};

class OdError_InvalidIndex : public OdError {
 public:
  OdError_InvalidIndex() : OdError(eInvalidIndex) {}
};

// Throws OdError(code) unless code is eOk.
inline void odThrowIfFailed(OdResult code) {
  if (code != eOk) throw OdError(code);
}
