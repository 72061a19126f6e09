// Run-time classes: every platform object knows its class record, which gives
// its name, its DXF name, the application that registered it and its parent.
// Objects are reference counted; OdSmartPtr holds one reference.
#pragma once

#include <utility>

#include "OdResult.h"
#include "OdString.h"

class OdRxClass;
class OdRxObject;
struct OdDbClassSchema;

enum OdRxObjMod { kOdRxObjAttach };

// Intrusive reference-counting pointer. Assigning an object of another class
// checks the kind and throws OdError_NotThatKindOfClass when it does not fit.
template <class T>
class OdSmartPtr {
 public:
  OdSmartPtr() = default;
  OdSmartPtr(std::nullptr_t) {}
  OdSmartPtr(const T* object) : m_object(const_cast<T*>(object)) { addRef(); }
  OdSmartPtr(const T* object, OdRxObjMod) : m_object(const_cast<T*>(object)) {}
  OdSmartPtr(const OdSmartPtr& other) : m_object(other.m_object) { addRef(); }
  OdSmartPtr(OdSmartPtr&& other) noexcept : m_object(other.m_object) { other.m_object = nullptr; }
  template <class U>
  OdSmartPtr(const OdSmartPtr<U>& other) { assignChecked(other.get()); }
  template <class U, class = std::enable_if_t<!std::is_convertible_v<U*, T*>>>
  explicit OdSmartPtr(const U* other) { assignChecked(other); }
  ~OdSmartPtr() { release(); }

  OdSmartPtr& operator=(const OdSmartPtr& other) {
    if (other.m_object != m_object) {
      T* old = m_object;
      m_object = other.m_object;
      addRef();
      if (old) old->release();
    }
    return *this;
  }
  OdSmartPtr& operator=(OdSmartPtr&& other) noexcept {
    if (this != &other) {
      release();
      m_object = other.m_object;
      other.m_object = nullptr;
    }
    return *this;
  }
  OdSmartPtr& operator=(const T* object) { return *this = OdSmartPtr(object); }
  OdSmartPtr& operator=(std::nullptr_t) { release(); return *this; }
  template <class U>
  OdSmartPtr& operator=(const OdSmartPtr<U>& other) {
    OdSmartPtr tmp;
    tmp.assignChecked(other.get());
    return *this = std::move(tmp);
  }

  T* get() const { return m_object; }
  T* operator->() const { return m_object; }
  T& operator*() const { return *m_object; }
  operator T*() const { return m_object; }
  bool isNull() const { return m_object == nullptr; }
  explicit operator bool() const { return m_object != nullptr; }
  void release() {
    if (m_object) {
      T* old = m_object;
      m_object = nullptr;
      old->release();
    }
  }
  // Gives up the reference without releasing it.
  T* detach() { T* p = m_object; m_object = nullptr; return p; }
  void attach(T* object) { release(); m_object = object; }

  template <class U>
  void assignChecked(const U* other);

 private:
  void addRef() { if (m_object) m_object->addRef(); }
  T* m_object = nullptr;
};

using OdRxObjectPtr = OdSmartPtr<OdRxObject>;
using OdRxClassPtr = OdSmartPtr<OdRxClass>;

// Creates an object of a registered class.
using OdPseudoConstructorType = OdRxObjectPtr (*)();

#define ODRX_DECLARE_MEMBERS(ClassName)                              \
 public:                                                             \
  static OdRxClass* desc();                                          \
  OdRxClass* isA() const override;                                   \
  static OdSmartPtr<ClassName> cast(const OdRxObject* object);       \
  static OdSmartPtr<ClassName> createObject();                       \
  static OdRxObjectPtr pseudoConstructor();                          \
  static void rxInit();                                              \
  static void rxUninit();                                            \
                                                                     \
 private:                                                            \
  static OdRxClass* s_desc;                                          \
                                                                     \
 public:

// Root of every run-time object.
class OdRxObject {
 public:
  OdRxObject() = default;
  OdRxObject(const OdRxObject&) : m_refs(0) {}
  OdRxObject& operator=(const OdRxObject&) { return *this; }
  virtual ~OdRxObject() = default;

  static OdRxClass* desc();
  virtual OdRxClass* isA() const;
  static OdRxObjectPtr cast(const OdRxObject* object) { return OdRxObjectPtr(object); }
  bool isKindOf(const OdRxClass* cls) const;

  virtual void addRef() const { ++m_refs; }
  virtual void release() const;
  long numRefs() const { return m_refs; }

  // Called when the last reference goes; deletes the object by default.
  virtual void onFinalRelease() const { delete this; }

 protected:
  mutable OdInt32 m_refs = 0;

 private:
  static OdRxClass* s_desc;
};

// Record of one run-time class.
class OdRxClass : public OdRxObject {
 public:
  OdRxClass(const OdString& name, OdRxClass* parent, OdPseudoConstructorType constructor,
            const OdString& dxfName, const OdString& appName, int proxyFlags, int customFlags);

  static OdRxClass* desc();
  OdRxClass* isA() const override;

  const OdString& name() const { return m_name; }
  const OdString& dxfName() const { return m_dxfName; }
  const OdString& appName() const { return m_appName; }
  OdRxClass* myParent() const { return m_parent; }
  int proxyFlags() const { return m_proxyFlags; }
  int customFlags() const { return m_customFlags; }
  OdPseudoConstructorType constructor() const { return m_constructor; }
  bool isDerivedFrom(const OdRxClass* other) const;
  // Creates a new object of this class, or null for abstract classes.
  OdRxObjectPtr create() const;

  // The field table of a persistent class (null for other classes).
  const OdDbClassSchema* schema() const { return m_schema; }
  void setSchema(const OdDbClassSchema* schema) { m_schema = schema; }

  // Set when a loaded module registered the class, cleared on removal.
  bool isRegistered() const { return m_registered; }
  void setRegistered(bool on) { m_registered = on; }

 private:
  OdString m_name, m_dxfName, m_appName;
  OdRxClass* m_parent;
  OdPseudoConstructorType m_constructor;
  int m_proxyFlags, m_customFlags;
  const OdDbClassSchema* m_schema = nullptr;
  bool m_registered = false;
};

// Registers a class under its name (and its DXF name, when it has one).
// A class of that name already registered is returned instead.
OdRxClass* newOdRxClass(const OdString& name, OdRxClass* parent, OdPseudoConstructorType constructor = nullptr,
                        int dwgVer = 0, int maintVer = 0, int proxyFlags = 0,
                        const OdString& dxfName = OdString(), const OdString& appName = OdString(),
                        void* unused = nullptr, int customFlags = 0);
// Removes a class registered with newOdRxClass and frees its record.
void deleteOdRxClass(OdRxClass* cls);
OdRxClass* odrxFindClass(const OdString& name);
OdRxClass* odrxFindClassByDxfName(const OdString& dxfName);
// All registered classes, in registration order.
OdArray<OdRxClass*> odrxRegisteredClasses();

template <class T>
template <class U>
void OdSmartPtr<T>::assignChecked(const U* other) {
  release();
  if (!other) return;
  if (!other->isKindOf(T::desc())) throw OdError_NotThatKindOfClass(other->isA(), T::desc());
  m_object = static_cast<T*>(const_cast<U*>(other));
  m_object->addRef();
}

// Defines the run-time class members declared by ODRX_DECLARE_MEMBERS.
// The class record is created on first use and removed by rxUninit().
#define ODRX_DEFINE_MEMBERS_IMPL(ClassName, ParentClass, Constructor, DxfName, AppName, AfterInit) \
  OdRxClass* ClassName::s_desc = nullptr;                                               \
  OdRxClass* ClassName::desc() {                                                        \
    if (!s_desc) rxInit();                                                              \
    return s_desc;                                                                      \
  }                                                                                     \
  OdRxClass* ClassName::isA() const { return desc(); }                                  \
  OdSmartPtr<ClassName> ClassName::cast(const OdRxObject* object) {                     \
    if (object && object->isKindOf(desc()))                                             \
      return OdSmartPtr<ClassName>(static_cast<const ClassName*>(object));              \
    return OdSmartPtr<ClassName>();                                                     \
  }                                                                                     \
  void ClassName::rxInit() {                                                            \
    if (!s_desc)                                                                        \
      s_desc = newOdRxClass(OdString(L## #ClassName), ParentClass::desc(), Constructor, \
                            0, 0, 0, OdString(DxfName), OdString(AppName));             \
    AfterInit;                                                                          \
  }                                                                                     \
  void ClassName::rxUninit() {                                                          \
    if (s_desc) {                                                                       \
      deleteOdRxClass(s_desc);                                                          \
      s_desc = nullptr;                                                                 \
    }                                                                                   \
  }

#define ODRX_CONS_DEFINE_MEMBERS(ClassName, ParentClass, DxfName, AppName)                     \
  ODRX_DEFINE_MEMBERS_IMPL(ClassName, ParentClass, &ClassName::pseudoConstructor, DxfName, AppName, (void)0) \
  ODRX_DEFINE_CREATE(ClassName)

#define ODRX_DEFINE_CREATE(ClassName)                                                          \
  OdSmartPtr<ClassName> ClassName::createObject() {                                            \
    return OdSmartPtr<ClassName>(new ClassName());                                             \
  }                                                                                            \
  OdRxObjectPtr ClassName::pseudoConstructor() { return OdRxObjectPtr(createObject().get()); }

#define ODRX_NO_CONS_DEFINE_MEMBERS(ClassName, ParentClass)                             \
  ODRX_DEFINE_MEMBERS_IMPL(ClassName, ParentClass, nullptr, L"", L"", (void)0)            \
  OdSmartPtr<ClassName> ClassName::createObject() {                                     \
    throw OdError(eNotApplicable, OdString(L"abstract class " L## #ClassName));          \
  }                                                                                     \
  OdRxObjectPtr ClassName::pseudoConstructor() { return OdRxObjectPtr(); }
