#pragma once

#include <memory>
#include <vector>

namespace Model::database {

// List of records as scripts see it. Its elements are shared: a record that a script took out of a
// list is the one in the list, and changing it changes the database. Elements may be null when a
// script put None in.
template <class Record>
using RecordList = std::vector<std::shared_ptr<Record>>;

}  // namespace Model::database
