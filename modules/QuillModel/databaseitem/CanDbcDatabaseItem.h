#pragma once

#include <memory>
#include <string>

#include "databaseitem/CanDbcRecords.h"
#include "databaseitem/DatabaseItem.h"
#include "databaseitem/FrameLookup.h"

namespace Model::database {

// A DBC database: frames and signals of a CAN or CAN FD bus.
class CanDbcDatabaseItem : public DatabaseItem {
public:
    CanDbcDatabaseItem();

    [[nodiscard]] DatabaseKind kind() const override { return DatabaseKind::Dbc; }
    // The loaded content, never null. It stays whole when the item loads again or goes.
    [[nodiscard]] const std::shared_ptr<CanDbcDatabase>& database() const { return m_database; }
    // The frame that a lookup key finds; null when there is none.
    [[nodiscard]] std::shared_ptr<CanDBCEntry> find(const FrameKey& key) const;

protected:
    [[nodiscard]] bool readDocument(const QJsonObject& root, std::string& fault) override;
    void clear() override;
    [[nodiscard]] const char* documentKey() const override { return "messages"; }

private:
    std::shared_ptr<CanDbcDatabase> m_database;
    FrameLookup<CanDBCEntry> m_lookup;
};

// Format of a frame from the text of its VFrameFormat attribute, or from its flags when the text is
// none of the four known ones.
[[nodiscard]] CanFrameFormat frameFormatOf(const std::string& text, bool isExtended, bool isFD);

}  // namespace Model::database
