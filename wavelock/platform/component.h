// What a client and a module that it loads agree on: results, counted objects, class factories and the four
// functions that a module exports. Only plain values and virtual calls cross the border, nothing throws
// across it, and every object is freed by the module that made it.
#pragma once

#include <cstdint>
#include <utility>

#include "wavelock/platform/identifier.h"

namespace wavelock {

// The numbers are those of the component model, so that they mean the same wherever they are seen.
enum class Result : std::uint32_t {
  kDone = 0,
  kNo = 1,  // done, and the answer is no
  kNoInterface = 0x80004002,
  kNullPointer = 0x80004003,
  kMemberNotFound = 0x80020003,
  kTypeMismatch = 0x80020005,
  kUnknownName = 0x80020006,
  kException = 0x80020009,  // the method could not be carried out: memory ran out
  kBadParameterCount = 0x8002000E,
  kBufferTooSmall = 0x80020013,
  kClassNotAvailable = 0x80040111,  // the module has no such class
  kClassNotRegistered = 0x80040154,
  kUnknownProgrammaticId = 0x800401F3,
  kModuleNotFound = 0x800401F8,  // or it cannot be loaded
  kNoModule = 0x800401F9,        // loaded, but it exports no classes
  kTypeLibraryFailed = 0x80040200,
  kClassFailed = 0x80040201,
  kOutOfMemory = 0x8007000E,
};

// An object with a count of those who hold it; it goes with the last of them.
class Component {
 public:
  static constexpr Identifier kId = *ParseIdentifier("{C5850FD3-6B1D-4E68-9E02-CA28971ADC9F}");

  // The same object by another of its interfaces, counted for the caller. `*object` is null after a failure.
  virtual Result QueryInterface(const Identifier& interfaceId, void** object) noexcept = 0;
  virtual std::uint32_t AddRef() noexcept = 0;   // the count, for tests only
  virtual std::uint32_t Release() noexcept = 0;  // the count, for tests only

 protected:
  ~Component() = default;
};

class ClassFactory : public Component {
 public:
  static constexpr Identifier kId = *ParseIdentifier("{B9C5B09A-192D-4D99-B5AA-2E783CB3EE1F}");

  virtual Result CreateInstance(const Identifier& interfaceId, void** object) noexcept = 0;

  // Locks, in pairs with their opposites, keep the module loaded while no object lives.
  virtual Result LockServer(bool lock) noexcept = 0;

 protected:
  ~ClassFactory() = default;
};

// One count on an object, given back when the holder goes.
template <class Interface>
class Reference {
 public:
  Reference() = default;
  Reference(const Reference& other) : object_(other.object_) {
    if (object_ != nullptr) object_->AddRef();
  }
  Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Reference& operator=(Reference other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Reference() { Reset(); }

  void Reset() {
    if (Interface* const object = std::exchange(object_, nullptr)) object->Release();
  }

  // For a call that stores a counted pointer. What was held is given back first.
  void** Receive() {
    Reset();
    return reinterpret_cast<void**>(&object_);
  }

  // Null when the object has no such interface.
  template <class Other>
  Reference<Other> As() const {
    Reference<Other> other;
    if (object_ != nullptr) object_->QueryInterface(Other::kId, other.Receive());
    return other;
  }

  Interface* operator->() const { return object_; }
  Interface& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  Interface* object_ = nullptr;
};

// What a module exports.
using CanUnloadNowFunction = Result();
using GetClassObjectFunction = Result(const Identifier* classId, const Identifier* interfaceId,
                                      void** object);
using RegisterServerFunction = Result();  // and the one that takes the registration back

inline constexpr char kCanUnloadNow[] = "DllCanUnloadNow";
inline constexpr char kGetClassObject[] = "DllGetClassObject";
inline constexpr char kRegisterServer[] = "DllRegisterServer";
inline constexpr char kUnregisterServer[] = "DllUnregisterServer";

}  // namespace wavelock
