#pragma once

#include <pybind11/pybind11.h>

#include <string>

// One function per subsystem; the module entry calls them in a fixed order, which is the order in
// which types become known to later signatures.
void bindRecords(pybind11::module_& m);
void bindDatabaseRecords(pybind11::module_& m);
void bindFilterLists(pybind11::module_& m);
void bindScheduleTables(pybind11::module_& m);  // in its place among the database records
void bindDevice(pybind11::module_& m);
void bindTransmit(pybind11::module_& m);
void bindDatabaseFunctions(pybind11::module_& m);
void bindDatabaseAdditions(pybind11::module_& m);  // at the end of the database functions
void bindReceive(pybind11::module_& m);
void bindBatches(pybind11::module_& m);
void bindCounters(pybind11::module_& m);
void bindChannelCalls(pybind11::module_& m);

namespace scripts {

// copy.copy and copy.deepcopy of a record.
template <class Class>
void addCopies(Class& type) {
    using Record = typename Class::type;
    type.def("__copy__", [](const Record& self) { return Record(self); });
    type.def(
        "__deepcopy__", [](const Record& self, const pybind11::dict&) { return Record(self); },
        pybind11::arg("memo"));
}

// == and != by value; anything else is left to the other operand.
template <class Class>
void addEquality(Class& type) {
    using Record = typename Class::type;
    type.def(
        "__eq__", [](const Record& self, const Record& other) { return self == other; },
        pybind11::arg("other"), pybind11::is_operator());
}

// Constructor that sets the attributes it is given by name.
template <class Record>
auto makeFromKeywords() {
    return pybind11::init([](const pybind11::kwargs& attributes) {
        // Set through the attributes themselves, so that the same checks hold.
        const pybind11::object record = pybind11::cast(Record());
        for (const auto& [name, value] : attributes) {
            if (!pybind11::hasattr(record, name)) {
                throw pybind11::type_error("no attribute named " +
                                           std::string(pybind11::str(name)));
            }
            pybind11::setattr(record, name, value);
        }
        return record.cast<Record>();
    });
}

}  // namespace scripts
