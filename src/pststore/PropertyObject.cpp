#include "pststore/PropertyObject.h"

#include "Common/LittleEndian.h"

namespace pststore {

namespace {

wstring widen(const byte_vector& bytes) {
  wstring text(bytes.size(), u'\0');
  for (size_t i = 0; i < bytes.size(); ++i) {
    text[i] = static_cast<char16_t>(static_cast<signed char>(bytes[i]));
  }
  return text;
}

wstring from_utf16(const byte_vector& bytes) {
  wstring text(bytes.size() / 2, u'\0');
  for (size_t i = 0; i < text.size(); ++i) {
    text[i] = tarn::LoadLittleEndian<char16_t>(&bytes[2 * i]);
  }
  return text;
}

}  // namespace

template <>
wstring const_property_object::read_prop<wstring>(ushort id) const {
  const byte_vector bytes = get_value_variable(id);
  return get_prop_type(id) == prop_type_string ? widen(bytes) : from_utf16(bytes);
}

}  // namespace pststore
