#pragma once

#include "databaseitem/FlexRayDatabaseItem.h"

namespace Model::database {

// The FlexRay part of an ARXML file.
class FlexRayArxmlDatabaseItem : public FlexRayDatabaseItem {
public:
    [[nodiscard]] DatabaseKind kind() const override { return DatabaseKind::Arxml; }
};

}  // namespace Model::database
