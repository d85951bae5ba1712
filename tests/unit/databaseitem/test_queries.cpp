#include <sstream>
#include <string>

#include "DatabaseTest.h"
#include "databaseitem/DatabaseQueries.h"
#include "lin/lin.pb.h"

namespace {

using namespace Model::database;
using Bytes = std::vector<uint8_t>;

constexpr const char* kDbc = R"({"messages": [
    {"id": 5, "name": "Brake", "signals": [
        {"name": "Force", "start_bit": 0, "bit_length": 8, "factor": 0.5, "offset": -40,
         "is_signed": true},
        {"name": "Mode", "start_bit": 8, "bit_length": 4,
         "value_table": [{"name": "Off", "value": 0}, {"name": "On", "value": 1}]},
        {"name": "Wide", "start_bit": 24, "bit_length": 16, "is_big_endian": true},
        {"name": "Beyond", "start_bit": 600, "bit_length": 8}]},
    {"id": 6, "name": "Ext", "is_extended_frame": true}]})";

class QueryTest : public DatabaseTest {};

double numberOf(const DecodedValue& value) {
    return std::holds_alternative<double>(value) ? std::get<double>(value) : -999.0;
}

TEST_F(QueryTest, framesComeWithTheirCode) {
    const std::string file = write("a.dbc", kDbc);
    const auto named = getCanFrameByNameFromDBC(file, "Brake");
    EXPECT_EQ(named.code, kQueryDone);
    EXPECT_EQ(named.value->id, 5);
    EXPECT_EQ(getCanFrameByIdFromDBC(file, 5).value->name, "Brake");
    EXPECT_EQ(getCanFrameByIdFromDBC(file, 6).code, kNotFound);
    for (const int64_t id : {int64_t{1} << 32 | 5, int64_t{-1} << 33}) {
        EXPECT_EQ(getCanFrameByIdFromDBC(file, id).code, kNotFound);
    }
    const auto missing = getCanFrameByNameFromDBC(path("no.dbc"), "Brake");
    EXPECT_EQ(missing.code, kLoadFailed);
    ASSERT_NE(missing.value, nullptr);
    EXPECT_EQ(getCanFrameByIdFromDBC(path("no.dbc"), int64_t{1} << 40).code, kLoadFailed);
}

TEST_F(QueryTest, everyQueryReadsTheFileAnew) {
    const std::string file = write("a.dbc", kDbc);
    ASSERT_EQ(getCanFrameByIdFromDBC(file, 5).code, kQueryDone);
    write("a.dbc", R"({"messages": [{"id": 9, "name": "New"}]})");
    EXPECT_EQ(getCanFrameByIdFromDBC(file, 5).code, kNotFound);
    EXPECT_EQ(getCanFrameByIdFromDBC(file, 9).code, kQueryDone);
}

TEST_F(QueryTest, valuesAreTextsOrUnsignedScaledNumbers) {
    const std::string file = write("a.dbc", kDbc);
    const Bytes data = {0xFF, 0x01, 0x12, 0x34};
    // The raw value counts as unsigned although the signal is signed.
    EXPECT_EQ(numberOf(getCanSignalValueFromDBC(data, file, "Brake", "Force").value), 87.5);
    EXPECT_EQ(std::get<std::string>(getCanSignalValueFromDBC(data, file, "Brake", "Mode").value),
              "On");
    EXPECT_EQ(numberOf(getCanSignalValueFromDBC(Bytes{0, 2}, file, "Brake", "Mode").value), 2.0);
    EXPECT_EQ(numberOf(getCanSignalValueFromDBC(data, file, "Brake", "Wide").value), 0x1234);
    // What does not fit decodes as all ones.
    EXPECT_EQ(numberOf(getCanSignalValueFromDBC({}, file, "Brake", "Wide").value),
              18446744073709551615.0);
    const auto unknown = getCanSignalValueFromDBC(data, file, "Brake", "force");
    EXPECT_EQ(unknown.code, kNotFound);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(unknown.value));
    EXPECT_EQ(getCanSignalValueFromDBC(data, file, "Ext", "Force").code, kNotFound);
    EXPECT_EQ(getCanSignalValueFromDBC(data, path("x.dbc"), "Brake", "Force").code, kLoadFailed);
}

TEST_F(QueryTest, settingWritesTheRawValueAndTwoLines) {
    const std::string file = write("a.dbc", kDbc);
    Bytes data(4, 0);
    std::ostringstream out;
    EXPECT_EQ(setCanFrameBySignalFromDBC(data, file, "Brake", "Wide", 4660.9, out), kQueryDone);
    EXPECT_EQ(data, (Bytes{0, 0, 0x12, 0x34}));
    EXPECT_EQ(out.str(),
              "rawValueToByte before:4660.9Data: [0X0, 0X0, 0X0, 0X0]\n"
              "rawValueToByte after:1Data: [0X0, 0X0, 0X12, 0X34]\n");
    std::ostringstream silent;
    EXPECT_EQ(setCanFrameBySignalFromDBC(data, file, "Brake", "Nothing", 1, silent), kNotFound);
    EXPECT_EQ(setCanFrameBySignalFromDBC(data, file, "Ext", "Wide", 1, silent), kNotFound);
    EXPECT_EQ(setCanFrameBySignalFromDBC(data, path("x.dbc"), "B", "W", 1, silent), kLoadFailed);
    EXPECT_EQ(silent.str(), "");
    EXPECT_THROW((void)setCanFrameBySignalFromDBC(data, file, "Brake", "Beyond", 1, silent),
                 std::out_of_range);
}

TEST_F(QueryTest, arxmlQueriesWalkThePdusInOrder) {
    const std::string file = write("a.arxml", R"({"can_cluster": [{"frames": [{"id": 5, "name": "F",
        "ipdus": [{"isignals": [{"name": "A", "length": 8}]},
                  {"isignals": [{"name": "B", "start_position": 8, "length": 8, "compu_method":
                      {"compu_scale": 1, "compu_denominator": 4, "compu_offset": 2}},
                      {"name": "A", "start_position": 16, "length": 8}]},
                  {"type": "CONTAINER-I-PDU", "header": "SHORT-HEADER",
                   "ipdus": [{"isignals": [{"name": "C"}]}]},
                  {"type": "MULTIPLEXED-I-PDU", "ipdus": [{"isignals": [
                      {"name": "D", "start_position": 8, "length": 4}]}]}]}]}]})");
    const Bytes data = {1, 10, 3};
    EXPECT_EQ(numberOf(getCanSignalValueFromArxml(data, file, "F", "A").value), 1.0);
    EXPECT_EQ(numberOf(getCanSignalValueFromArxml(data, file, "F", "B").value), 4.5);
    EXPECT_EQ(getCanSignalValueFromArxml(data, file, "F", "C").code, kNotFound);
    EXPECT_EQ(numberOf(getCanSignalValueFromArxml(data, file, "F", "D").value), 10.0);
    EXPECT_EQ(getCanFrameByIdFromArxml(file, 5).value->name, "F");
    EXPECT_EQ(getCanFrameByNameFromArxml(file, "F").value->id, 5);
    Bytes changed(2, 0);
    std::ostringstream out;
    EXPECT_EQ(setCanFrameBySignalFromArxml(changed, file, "F", "B", 31, out), kQueryDone);
    EXPECT_EQ(out.str(),
              "rawValueToByte before:31Data: [0X0, 0X0]\n"
              "rawValueToByte after:Data: [0X0, 0X1F]\n");
}

TEST_F(QueryTest, linValuesStayUnscaled) {
    const std::string file = write("a.ldf", R"({"nodes": {"master": {"name": "M"}}, "frames": [
        {"id": 1, "name": "F", "length": 2, "signals": [{"name": "A", "bit_length": 8,
          "factor": 0.5, "offset": 3, "value_table": [{"name": "seven", "value": 7}]}]},
        {"id": 60, "name": "master_request", "length": 8,
         "signals": [{"name": "B0", "bit_length": 8}]}],
        "schedule_tables": [{"name": "T", "schedule": []}]})");
    EXPECT_EQ(numberOf(getLinSignalValueFromLDF(Bytes{20}, file, "F", "A").value), 20.0);
    EXPECT_EQ(std::get<std::string>(getLinSignalValueFromLDF(Bytes{7}, file, "F", "A").value),
              "seven");
    EXPECT_EQ(numberOf(getLinSignalValueFromLDF(Bytes{9}, file, "MasterReq", "B0").value), 9.0);
    EXPECT_EQ(getLinSignalValueFromLDF(Bytes{9}, file, "SlaveResp", "B0").code, kNotFound);
    EXPECT_EQ(getLinSignalValueFromLDF(Bytes{9}, file, "F", "Z").code, kNotFound);
    EXPECT_EQ(getScheduleTableFromLDF(file).value.at(0)->name(), "T");
    const std::string none = write("none.ldf", R"({"frames": []})");
    EXPECT_EQ(getScheduleTableFromLDF(none).code, kLoadFailed);
    EXPECT_EQ(loadLinLDF(none).code, kQueryDone);
}

TEST_F(QueryTest, contentsAreUtf8) {
    EXPECT_EQ(readCanDBCContents(write("a.dbc",
                                       "\xEF\xBB\xBFunit \xC2\xB0"
                                       "C\r\n"))
                  .value,
              "unit \xC2\xB0"
              "C\r\n");
    EXPECT_EQ(readCanArxmlContents(write("b.txt",
                                         "\xB0"
                                         "C \x80 \xFC"))
                  .value,
              "\xC2\xB0"
              "C \xE2\x82\xAC \xC3\xBC");
    // As the converters read it: "angle" in the Chinese code, and UTF-16 with its mark.
    EXPECT_EQ(readCanDBCContents(write("c.dbc", "CM_ \"\xBD\xC7\xB6\xC8\xD6\xB5\";")).value,
              "CM_ \"\xE8\xA7\x92\xE5\xBA\xA6\xE5\x80\xBC\";");
    EXPECT_EQ(readCanArxmlContents(write("d.arxml", std::string("\xFF\xFE<\0\xFC\0", 6))).value,
              "<\xC3\xBC");
    EXPECT_EQ(readCanDBCContents(write("empty.dbc", "")).code, kQueryDone);
    EXPECT_EQ(readCanDBCContents(path("none.dbc")).code, kLoadFailed);
    EXPECT_EQ(readCanDBCContents(path("root")).code, kLoadFailed);
    EXPECT_NE(logText().find("is a directory"), std::string::npos);
}

}  // namespace
