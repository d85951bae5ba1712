#pragma once

#include "databaseitem/FlexRayDatabaseItem.h"

namespace Model::database {

// The FlexRay part of a FIBEX file (suffix ".xml" or ".fibex").
class FlexRayFibexDatabaseItem : public FlexRayDatabaseItem {
public:
    [[nodiscard]] DatabaseKind kind() const override { return DatabaseKind::Fibex; }
};

}  // namespace Model::database
