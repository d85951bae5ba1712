#include "pysdk/py_extension/record_objects.h"

#include <pybind11/pybind11.h>

#include <memory>
#include <new>
#include <type_traits>
#include <typeinfo>

#include "pysdk/py_extension/script_records.h"

namespace py = pybind11;

namespace scripts {
namespace {

PyTypeObject* registeredType(const std::type_info& type) {
    const py::detail::type_info* info = py::detail::get_type_info(type);
    if (info == nullptr) PyErr_SetString(PyExc_RuntimeError, "frame record is not registered");
    return info == nullptr ? nullptr : info->type;
}

// An instance as the type's own constructor leaves it, but for the entry in the table of
// addresses, which serves only to find the object of an address again.
template <class Record>
PyObject* makeInstance(PyTypeObject*& type, const rv::Frame& frame, std::string_view name) {
    if (type == nullptr) type = registeredType(typeid(Record));
    if (type == nullptr) return nullptr;
    auto* record = new (std::nothrow) Record;
    if (record == nullptr) return PyErr_NoMemory();
    PyObject* self = type->tp_alloc(type, 0);
    if (self == nullptr) {
        delete record;
        return nullptr;
    }
    fill(*record, frame);
    if constexpr (std::is_same_v<Record, CANRawFrame>) {
        if (!name.empty()) {
            record->name.assign(name);
            record->parsed = true;
        }
    }
    using Holder = std::unique_ptr<Record>;
    static_assert(sizeof(Holder) <= sizeof(void*));
    auto* instance = reinterpret_cast<py::detail::instance*>(self);
    instance->simple_layout = true;
    instance->simple_value_holder[0] = record;
    ::new (&instance->simple_value_holder[1]) Holder(record);
    instance->simple_holder_constructed = true;
    instance->simple_instance_registered = false;
    instance->owned = true;
    return self;
}

}  // namespace

PyObject* RecordObjects::make(rv::FrameType type, const rv::Frame& frame, std::string_view name) {
    switch (type) {
        case rv::FrameType::Can:
            return makeInstance<CANRawFrame>(m_can, frame, name);
        case rv::FrameType::Lin:
            return makeInstance<LinFrame>(m_lin, frame, name);
        case rv::FrameType::Ethernet:
            return makeInstance<EthFrame>(m_eth, frame, name);
        default:
            break;
    }
    PyErr_SetString(PyExc_RuntimeError, "no record for this kind of frame");
    return nullptr;
}

}  // namespace scripts
