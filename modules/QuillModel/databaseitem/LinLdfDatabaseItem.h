#pragma once

#include <memory>
#include <string>

#include "databaseitem/DatabaseItem.h"
#include "databaseitem/LinLdfRecords.h"

namespace Model::database {

// An LDF database: nodes, frames and schedule tables of a LIN cluster.
class LinLdfDatabaseItem : public DatabaseItem {
public:
    LinLdfDatabaseItem();

    [[nodiscard]] DatabaseKind kind() const override { return DatabaseKind::Ldf; }
    // The loaded content, never null. It stays whole when the item loads again or goes.
    [[nodiscard]] const std::shared_ptr<LinLdfDatabase>& database() const { return m_database; }

protected:
    [[nodiscard]] bool readDocument(const QJsonObject& root, std::string& fault) override;
    void clear() override;
    [[nodiscard]] const char* documentKey() const override { return "schedule_tables"; }

private:
    std::shared_ptr<LinLdfDatabase> m_database;
};

}  // namespace Model::database
