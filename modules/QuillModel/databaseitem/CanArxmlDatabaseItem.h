#pragma once

#include <memory>
#include <string>

#include "databaseitem/CanArxmlRecords.h"
#include "databaseitem/DatabaseItem.h"
#include "databaseitem/FrameLookup.h"

namespace Model::database {

// An ARXML database: CAN and CAN FD clusters with frames that carry PDUs that carry signals.
class CanArxmlDatabaseItem : public DatabaseItem {
public:
    CanArxmlDatabaseItem();

    [[nodiscard]] DatabaseKind kind() const override { return DatabaseKind::Arxml; }
    // The loaded content, never null. It stays whole when the item loads again or goes.
    [[nodiscard]] const std::shared_ptr<CanArxmlDatabase>& database() const { return m_database; }
    // The frame of any cluster that a lookup key finds; null when there is none.
    [[nodiscard]] std::shared_ptr<CanFdDBCEntry> find(const FrameKey& key) const;

protected:
    [[nodiscard]] bool readDocument(const QJsonObject& root, std::string& fault) override;
    void clear() override;
    [[nodiscard]] const char* documentKey() const override { return "can_cluster"; }

private:
    std::shared_ptr<CanArxmlDatabase> m_database;
    FrameLookup<CanFdDBCEntry> m_lookup;
};

}  // namespace Model::database
