// PropertyObject.h - reading named, typed values: the interface that property contexts and rows of
// tables share, so that the same code reads both.
//
// All reads but get_prop_list and prop_exists raise key_not_found<ushort> for a property that is
// not there; damage raises what Errors.h lists. Sizes count bytes.
#ifndef TARN_PSTSTORE_PROPERTYOBJECT_H
#define TARN_PSTSTORE_PROPERTYOBJECT_H

#include "pststore/HnidStream.h"
#include "pststore/Types.h"

namespace pststore {

inline constexpr ushort prop_type_string = 0x1E;  // 8-bit text

class const_property_object {
 public:
  const_property_object() = default;
  const_property_object(const const_property_object&) = default;
  const_property_object& operator=(const const_property_object&) = default;
  virtual ~const_property_object() = default;

  // The ids of all properties. Not used by the filter.
  virtual vector<ushort> get_prop_list() const = 0;
  virtual ushort get_prop_type(ushort id) const = 0;
  virtual bool prop_exists(ushort id) const = 0;
  virtual ulonglong size(ushort id) const = 0;
  virtual hnid_stream_device open_prop_stream(ushort id) const = 0;

  // What is in the entry or cell itself, whatever the type is.
  virtual unsigned char get_value_1(ushort id) const = 0;
  virtual ushort get_value_2(ushort id) const = 0;
  virtual ulong get_value_4(ushort id) const = 0;
  virtual ulonglong get_value_8(ushort id) const = 0;

  // The bytes that the entry or cell refers to.
  virtual byte_vector get_value_variable(ushort id) const = 0;

  // T is wstring. 8-bit text is widened byte by byte, with its sign and without a code page; zero
  // bytes count as text. All else is taken as UTF-16LE, less an odd last byte.
  template <typename T>
  T read_prop(ushort id) const;
};

template <>
wstring const_property_object::read_prop<wstring>(ushort id) const;

}  // namespace pststore

#endif
