#pragma once

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <utility>
#include <vector>

// Python objects whose signature texts tell what they hold. Signatures are what scripts, editors
// and the type stub know of a call, so "tuple" or "object" is not enough.
namespace scripts {

// Result of a query: (code, value), the code an int.
template <class Value>
class CodeAnd : public pybind11::tuple {
public:
    using pybind11::tuple::tuple;
};

// A tuple of any length with elements of one type.
template <class Item>
class TupleOf : public pybind11::tuple {
public:
    using pybind11::tuple::tuple;
};

// Payload bytes as scripts read them.
class IntList : public pybind11::list {
public:
    using pybind11::list::list;
};

// Decoded signals by name.
class SignalValues : public pybind11::dict {
public:
    using pybind11::dict::dict;
};

// A decoded signal: None when the query failed.
class SignalValue : public pybind11::object {
public:
    SignalValue() = default;
    SignalValue(pybind11::object value)  // NOLINT: stands for the object
        : pybind11::object(std::move(value)) {}
};

// Payload bytes as scripts hand them in; whoever takes one checks what it holds.
class PayloadArgument : public pybind11::object {
public:
    using pybind11::object::object;
    static bool check_(pybind11::handle) { return true; }  // NOLINT: the name is pybind11's
};

// What a frame is looked up by; whoever takes one checks what it holds.
class FrameKey : public pybind11::object {
public:
    using pybind11::object::object;
    static bool check_(pybind11::handle) { return true; }  // NOLINT: the name is pybind11's
};

// A list argument or result.
template <class Item>
class ListOf : public std::vector<Item> {
public:
    using std::vector<Item>::vector;
    ListOf(std::vector<Item> items)  // NOLINT: stands for the vector
        : std::vector<Item>(std::move(items)) {}
};

}  // namespace scripts

// NOLINTBEGIN(readability-identifier-naming): the names are pybind11's
namespace pybind11::detail {

template <class Value>
struct handle_type_name<scripts::CodeAnd<Value>> {
    static constexpr auto name =
        const_name("tuple[int, ") + make_caster<Value>::name + const_name("]");
};
template <class Item>
struct handle_type_name<scripts::TupleOf<Item>> {
    static constexpr auto name =
        const_name("tuple[") + make_caster<Item>::name + const_name(", ...]");
};
template <>
struct handle_type_name<scripts::IntList> {
    static constexpr auto name = const_name("list[int]");
};
template <>
struct handle_type_name<scripts::SignalValues> {
    static constexpr auto name = const_name("dict[str, Union[float, str]]");
};
template <>
struct handle_type_name<scripts::SignalValue> {
    static constexpr auto name = const_name("object");
};
template <>
struct handle_type_name<scripts::PayloadArgument> {
    static constexpr auto name = const_name("Union[bytes, bytearray, list[int]]");
};
template <>
struct handle_type_name<scripts::FrameKey> {
    static constexpr auto name = const_name("Union[str, int]");
};

template <class Item>
struct type_caster<scripts::ListOf<Item>> : list_caster<scripts::ListOf<Item>, Item> {
    static constexpr auto name = const_name("list[") + make_caster<Item>::name + const_name("]");
};

}  // namespace pybind11::detail
// NOLINTEND(readability-identifier-naming)
