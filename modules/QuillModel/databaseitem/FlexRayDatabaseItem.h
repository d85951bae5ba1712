#pragma once

#include <memory>
#include <string>

#include "databaseitem/DatabaseItem.h"
#include "databaseitem/FlexRayRecords.h"

namespace Model::database {

// FlexRay clusters from a description of either kind.
class FlexRayDatabaseItem : public DatabaseItem {
public:
    FlexRayDatabaseItem();

    // The loaded content, never null. It stays whole when the item loads again or goes.
    [[nodiscard]] const std::shared_ptr<FlexRayDatabase>& database() const { return m_database; }

protected:
    [[nodiscard]] bool readDocument(const QJsonObject& root, std::string& fault) override;
    void clear() override;
    [[nodiscard]] const char* documentKey() const override { return "flexray_cluster"; }

private:
    std::shared_ptr<FlexRayDatabase> m_database;
};

}  // namespace Model::database
