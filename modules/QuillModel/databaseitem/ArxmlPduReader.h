#pragma once

#include "databaseitem/CanArxmlRecords.h"

namespace Model::database {

class JsonObjectReader;

// One PDU with its signals and the PDUs inside it.
void readPdu(JsonObjectReader& json, CanFdPdu& pdu);

}  // namespace Model::database
