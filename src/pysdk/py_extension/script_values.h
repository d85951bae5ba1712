#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <limits>
#include <span>
#include <type_traits>
#include <vector>

#include "pysdk/py_extension/typed_objects.h"

// Arguments and attributes that are checked on their way from a script: a wrong kind is a
// TypeError, a value outside its range a ValueError, and both name the field.
namespace scripts {

[[nodiscard]] int64_t readSigned(pybind11::handle value, const char* field, int64_t min,
                                 int64_t max);
[[nodiscard]] uint64_t readUnsigned(pybind11::handle value, const char* field, uint64_t min,
                                    uint64_t max);
[[nodiscard]] double readDouble(pybind11::handle value, const char* field, double min, double max);
// From bytes, bytearray or a sequence of ints 0 to 255.
[[nodiscard]] std::vector<uint8_t> readBytes(pybind11::handle value, const char* field,
                                             size_t maxLength);
[[nodiscard]] IntList toList(std::span<const uint8_t> bytes);

// A text as a template argument.
template <size_t N>
struct FieldName {
    char text[N];
    constexpr FieldName(const char (&from)[N]) {  // NOLINT: converts from literals on purpose
        for (size_t i = 0; i < N; ++i) text[i] = from[i];
    }
};

// An integer argument named `Name` in errors.
template <FieldName Name, class T, T Min = std::numeric_limits<T>::min(),
          T Max = std::numeric_limits<T>::max()>
struct Ranged {
    T value{};
    operator T() const { return value; }  // NOLINT: stands for the integer
};

// A one-bit field; True and False are as good as 1 and 0.
template <FieldName Name>
using BitField = Ranged<Name, uint8_t, 0, 1>;

// A floating-point argument; the limits are integers, as all limits here are.
template <FieldName Name, int Min, int Max>
struct RangedDouble {
    double value = 0;
    operator double() const { return value; }  // NOLINT: stands for the number
};

// A payload argument of at most `MaxLength` bytes.
template <FieldName Name, size_t MaxLength>
struct BytesField {
    std::vector<uint8_t> value;
};

}  // namespace scripts

namespace pybind11::detail {

template <scripts::FieldName Name, class T, T Min, T Max>
struct type_caster<scripts::Ranged<Name, T, Min, Max>> {
    using Field = scripts::Ranged<Name, T, Min, Max>;
    PYBIND11_TYPE_CASTER(Field, const_name("int"));

    bool load(handle source, bool) {
        if constexpr (std::is_signed_v<T>) {
            value.value = static_cast<T>(scripts::readSigned(source, Name.text, Min, Max));
        } else {
            value.value = static_cast<T>(scripts::readUnsigned(source, Name.text, Min, Max));
        }
        return true;
    }
    static handle cast(Field source, return_value_policy, handle) {
        return int_(source.value).release();
    }
};

template <scripts::FieldName Name, int Min, int Max>
struct type_caster<scripts::RangedDouble<Name, Min, Max>> {
    using Field = scripts::RangedDouble<Name, Min, Max>;
    PYBIND11_TYPE_CASTER(Field, const_name("float"));

    bool load(handle source, bool) {
        value.value = scripts::readDouble(source, Name.text, Min, Max);
        return true;
    }
    static handle cast(Field source, return_value_policy, handle) {
        return float_(source.value).release();
    }
};

template <scripts::FieldName Name, size_t MaxLength>
struct type_caster<scripts::BytesField<Name, MaxLength>> {
    using Field = scripts::BytesField<Name, MaxLength>;
    PYBIND11_TYPE_CASTER(Field, const_name("Union[bytes, bytearray, list[int]]"));

    bool load(handle source, bool) {
        value.value = scripts::readBytes(source, Name.text, MaxLength);
        return true;
    }
    static handle cast(const Field& source, return_value_policy, handle) {
        return scripts::toList(source.value).release();
    }
};

}  // namespace pybind11::detail
