// How the objects of a module are made: counting and the search for interfaces, once for all of them.
#pragma once

#include <atomic>
#include <cstdint>
#include <new>
#include <type_traits>

#include "wavelock/platform/component.h"

namespace wavelock {

// How many objects, factories and locks a module has outside. It may be unloaded at 0.
class ModuleUse {
 public:
  void Add() noexcept { ++count_; }
  void Remove() noexcept { --count_; }
  std::uint32_t Count() const noexcept { return count_; }

 private:
  std::atomic<std::uint32_t> count_{0};
};

// An object with those interfaces, which are also found by the identifiers of Component. It is counted as a
// use of its module for as long as it lives, starts with a count of 1 and frees itself at 0.
template <class First, class... Others>
class ComponentObject : public First, public Others... {
 public:
  explicit ComponentObject(ModuleUse& use) : use_(use) { use_.Add(); }
  ComponentObject(const ComponentObject&) = delete;
  ComponentObject& operator=(const ComponentObject&) = delete;

  Result QueryInterface(const Identifier& interfaceId, void** object) noexcept override {
    if (object == nullptr) return Result::kNullPointer;
    *object = Find(interfaceId);
    if (*object == nullptr) return Result::kNoInterface;
    AddRef();
    return Result::kDone;
  }

  std::uint32_t AddRef() noexcept override { return ++count_; }

  std::uint32_t Release() noexcept override {
    const std::uint32_t count = --count_;
    if (count == 0) delete this;
    return count;
  }

 protected:
  virtual ~ComponentObject() { use_.Remove(); }

  // The interface of that name, or null.
  virtual void* Find(const Identifier& interfaceId) noexcept {
    void* found = interfaceId == Component::kId ? static_cast<First*>(this) : nullptr;
    FindAs<First>(interfaceId, found);
    (FindAs<Others>(interfaceId, found), ...);
    return found;
  }

 private:
  template <class Interface>
  void FindAs(const Identifier& interfaceId, void*& found) noexcept {
    if (interfaceId == Interface::kId) found = static_cast<Interface*>(this);
  }

  ModuleUse& use_;
  std::atomic<std::uint32_t> count_{1};
};

// A new object by one of its interfaces; it is gone again when it has no such interface.
template <class Object, class... Arguments>
Result MakeComponent(const Identifier& interfaceId, void** object, Arguments&&... arguments) noexcept {
  if (object == nullptr) return Result::kNullPointer;
  *object = nullptr;
  try {
    auto* const made = new Object(std::forward<Arguments>(arguments)...);
    const Result result = made->QueryInterface(interfaceId, object);
    made->Release();
    return result;
  } catch (...) {
    return Result::kOutOfMemory;
  }
}

}  // namespace wavelock
