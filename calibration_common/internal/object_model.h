// Steps of the classes' object model that are the same in each and not worth code in each.
#ifndef ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_
#define ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_

#include <google/protobuf/arena.h>
#include <google/protobuf/message.h>

#include <cstring>
#include <memory>

#include "calibration_common/runtime.h"

namespace zarvo {
namespace calibration_internal {

// Where an object's virtual table is, which tells its dynamic class: it stands in the first word.
inline const void* VirtualTableOf(const ::google::protobuf::Message& object) {
  const void* table;
  ::std::memcpy(&table, static_cast<const void*>(&object), sizeof(table));
  return table;
}

// Whether an object's dynamic class is T. If it is, T's functions can be called past the virtual
// table; a derived class may have its own. A class is known once the library is loaded; until then
// no object seems to be of it.
template <typename T>
class KnownClass {
 public:
  KnownClass() : virtual_table_(known_virtual_table_) {}
  bool Has(const ::google::protobuf::Message& object) const {
    return VirtualTableOf(object) == virtual_table_;
  }

  // Returns the object, whose dynamic class is T.
  static T* Know(T* object) {
    known_virtual_table_ = VirtualTableOf(*object);
    return object;
  }

  // Has() of an object that has no unknown fields. Where that is found out before the destructor
  // sets the virtual table, nobody can tell that it does, and it need not.
  bool HasPlain(const T& object) const {
    return Has(object) && !object._internal_metadata_.have_unknown_fields();
  }

 private:
  static const void* known_virtual_table_;

  const void* const virtual_table_;  // stays in a register where calls come in between
};
template <typename T>
const void* KnownClass<T>::known_virtual_table_ = nullptr;

// Makes an object of the prototype's class, which the arena deletes in the end.
__attribute__((cold, noinline)) inline ::google::protobuf::Message* NewOwnedMessage(
    const ::google::protobuf::Message& prototype, ::google::protobuf::Arena* arena) {
  ::std::unique_ptr<::google::protobuf::Message> message(prototype.New(nullptr));
  arena->Own(message.get());
  return message.release();
}
template <typename T>
inline T* NewOwned(const T& prototype, ::google::protobuf::Arena* arena) {
  return static_cast<T*>(NewOwnedMessage(prototype, arena));
}

}  // namespace calibration_internal
}  // namespace zarvo

#endif  // ZARVO_CALIBRATION_INTERNAL_OBJECT_MODEL_H_
