#pragma once

#include <memory>
#include <string>

#include "databaseitem/DatabaseItem.h"
#include "databaseitem/EthRecords.h"

namespace Model::database {

// The Ethernet part of an ARXML file: networks, endpoints, sockets with services, and the PDUs of
// the connections between them.
class EthArxmlDatabaseItem : public DatabaseItem {
public:
    EthArxmlDatabaseItem();

    [[nodiscard]] DatabaseKind kind() const override { return DatabaseKind::Arxml; }
    // The loaded content, never null. It stays whole when the item loads again or goes.
    [[nodiscard]] const std::shared_ptr<EthArxmlDatabase>& database() const { return m_database; }

protected:
    [[nodiscard]] bool readDocument(const QJsonObject& root, std::string& fault) override;
    void clear() override;
    [[nodiscard]] const char* documentKey() const override { return "eth_cluster"; }

private:
    std::shared_ptr<EthArxmlDatabase> m_database;
};

}  // namespace Model::database
