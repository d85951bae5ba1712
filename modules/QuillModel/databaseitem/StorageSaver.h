#pragma once

class QJsonObject;

namespace Model::database {

// Something that a project keeps in its JSON storage.
class StorageSaver {
public:
    virtual ~StorageSaver() = default;

    // Writes the object's keys into the storage object; others in it stay.
    virtual void saveTo(QJsonObject& storage) const = 0;
    // Takes the object's keys out of it. False, and nothing changed, when they have a wrong type;
    // missing keys give empty values.
    [[nodiscard]] virtual bool restoreFrom(const QJsonObject& storage) = 0;

protected:
    StorageSaver() = default;
    StorageSaver(const StorageSaver&) = default;
    StorageSaver& operator=(const StorageSaver&) = default;
};

}  // namespace Model::database
