// The host API's value types keep their fields behind one shared pointer, copied at the first change
// after a copy: a copy costs a reference count, and a field can be added in a later 1.x release
// without changing any class's size or layout.
#pragma once

#include <memory>
#include <utility>

namespace scrivlet {

// The fields, or their defaults for a value never written (default-made or moved from).
template <class Data>
const Data& readShared(const std::shared_ptr<Data>& data) {
  static const Data defaults;
  return data ? *data : defaults;
}

// The fields for a change, made this value's own first.
template <class Data>
Data& writeShared(std::shared_ptr<Data>& data) {
  if (!data)
    data = std::make_shared<Data>();
  else if (data.use_count() > 1)
    data = std::make_shared<Data>(*data);
  return *data;
}

}  // namespace scrivlet

// A field's getter and setter, for fields read by reference (strings, vectors, values) ...
#define SCRIVLET_SHARED_FIELD(Class, Type, name, setter)                 \
  const Type& Class::name() const { return readShared(d_).name; }        \
  void Class::setter(Type value) { writeShared(d_).name = std::move(value); }
// ... and by value (numbers, flags, enumerations).
#define SCRIVLET_SHARED_SCALAR(Class, Type, name, setter)        \
  Type Class::name() const { return readShared(d_).name; }       \
  void Class::setter(Type value) { writeShared(d_).name = value; }
