// Our own component objects, and references to anybody's.
#pragma once

#include <utility>

#include "morvunp/platform/platform.h"

namespace morvunp::sevenzip {

/// The reference count of an object: 0 until its creator holds it. Plain, not
/// atomic: an object is on one thread at a time.
class CMyUnknownImp {
 public:
  CMyUnknownImp() = default;
  CMyUnknownImp(const CMyUnknownImp&) = delete;
  CMyUnknownImp& operator=(const CMyUnknownImp&) = delete;

 protected:
  ~CMyUnknownImp() = default;

  ULONG m_nRefCount = 0;
};

/// The interfaces that an object gives when it is asked for them by id.
template <class... Interfaces>
struct Answers;

/// An object with these interfaces. It is handed over as any of them but gives
/// only those of `Answers` when asked by id, and the first one for IUnknown.
template <class A, class First, class... Others>
class Component;

template <class... Answered, class First, class... Others>
class Component<Answers<Answered...>, First, Others...>
    : public First, public Others..., public CMyUnknownImp {
 public:
  Component() = default;
  virtual ~Component() = default;
  Component(const Component&) = delete;
  Component& operator=(const Component&) = delete;

  HRESULT QueryInterface(const GUID& id, void** object) final {
    *object = nullptr;
    if (id == IUnknown::kId) *object = static_cast<First*>(this);
    (Answer<Answered>(id, object), ...);
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }

  ULONG AddRef() final { return ++m_nRefCount; }

  ULONG Release() final {
    if (--m_nRefCount != 0) return m_nRefCount;
    delete this;
    return 0;
  }

 private:
  template <class Interface>
  void Answer([[maybe_unused]] const GUID& id, void** object) {
    if (id == Interface::kId) *object = static_cast<Interface*>(this);
  }
};

/// A held reference.
template <class T>
class ComPtr {
 public:
  ComPtr() = default;
  explicit ComPtr(T* object) : m_pObject(object) {
    if (m_pObject != nullptr) m_pObject->AddRef();
  }
  ComPtr(const ComPtr& other) : ComPtr(other.m_pObject) {}
  ComPtr(ComPtr&& other) noexcept : m_pObject(std::exchange(other.m_pObject, nullptr)) {}
  ~ComPtr() { Reset(); }
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(m_pObject, other.m_pObject);
    return *this;
  }

  T* Get() const { return m_pObject; }
  T* operator->() const { return m_pObject; }
  explicit operator bool() const { return m_pObject != nullptr; }

  void Reset() {
    if (m_pObject != nullptr) std::exchange(m_pObject, nullptr)->Release();
    // Counted references are beyond the analyzer.
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
  }
  /// Gives the reference away.
  T* Detach() { return std::exchange(m_pObject, nullptr); }
  /// Where a function puts a reference that becomes ours.
  T** Receive() {
    Reset();
    return &m_pObject;
  }
  /// The same object's other interface; null when it has none.
  template <class Other>
  ComPtr<Other> Query() const {
    ComPtr<Other> other;
    void* object = nullptr;
    if (m_pObject != nullptr && m_pObject->QueryInterface(Other::kId, &object) == S_OK) {
      *other.Receive() = static_cast<Other*>(object);
    }
    return other;
  }

 private:
  T* m_pObject = nullptr;
};

/// A new object of our own, held.
template <class T, class... Arguments>
ComPtr<T> Create(Arguments&&... arguments) {
  return ComPtr<T>(new T(std::forward<Arguments>(arguments)...));
}

}  // namespace morvunp::sevenzip
