// The programs as the database items start them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "Corpus.h"
#include "common/ConverterProgram.h"

namespace {

namespace fs = std::filesystem;

class ConverterProgram : public ::testing::Test {
protected:
    void SetUp() override {
        const auto* const info = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string(info->test_suite_name()) + "_" + info->name();
        std::replace(name.begin(), name.end(), '/', '_');
        folder = fs::temp_directory_path() / ("quill_converter_" + name);
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    void TearDown() override {
        std::error_code error;
        fs::permissions(folder, fs::perms::owner_all, error);
        fs::remove_all(folder, error);
    }
    fs::path file(const std::string& name, const std::string& content) const {
        std::ofstream(folder / name, std::ios::binary) << content;
        return folder / name;
    }
    // Status of the program; what it wrote to standard error is in errors.
    int run(const std::string& program, const std::string& arguments) {
        const fs::path log = folder / "stderr.txt";
        const std::string command = "\"" + program + "\" " + arguments + " 2> \"" + log.string() +
                                    "\" > \"" + (folder / "stdout.txt").string() + "\"";
        const int status = std::system(command.c_str());
        errors = corpus::bytesOf(log);
        output = corpus::bytesOf(folder / "stdout.txt");
        fs::remove(log);
        fs::remove(folder / "stdout.txt");
#ifdef _WIN32
        return status;
#else
        return WEXITSTATUS(status);
#endif
    }
    int convert(const fs::path& from, const fs::path& to) {
        return run(QUILL_DBC2JSON,
                   "\"" + from.string() + "\" \"" + to.string() + "\" --jsonExportAll");
    }
    size_t filesLeft() const {
        return static_cast<size_t>(
            std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }
    fs::path folder;
    std::string errors;
    std::string output;
};

const std::string kGood = "VERSION \"1\"\nBU_: A\nBO_ 5 F: 8 A\n";

TEST_F(ConverterProgram, converts) {
    const fs::path in = file("ein Name \xC3\xA4 " + std::string(100, 'n') + ".dbc", kGood);
    const fs::path out = folder / "out.json";
    ASSERT_EQ(convert(in, out), 0) << errors;
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(corpus::Json::parse(corpus::bytesOf(out))["messages"][0]["name"], "F");
    EXPECT_EQ(filesLeft(), 2U) << "a temporary file is left";
    ASSERT_EQ(run(QUILL_DBC2JSON, "\"" + in.string() + "\" \"" + out.string() + "\""), 0);
    EXPECT_FALSE(corpus::Json::parse(corpus::bytesOf(out)).contains("value_tables"));
}

TEST_F(ConverterProgram, tellsOfItself) {
    for (const char* program : {QUILL_DBC2JSON, QUILL_LDF2JSON}) {
        EXPECT_EQ(run(program, "--help"), 0);
        EXPECT_NE(output.find("usage: "), std::string::npos);
        EXPECT_EQ(run(program, "--version"), 0);
        EXPECT_NE(output.find("2json "), std::string::npos);
        EXPECT_EQ(run(program, "onlyOne"), 2);
        EXPECT_EQ(run(program, "a b --what"), 2);
    }
}

struct FaultCase {
    const char* name;
    const char* content;
    size_t size;  // of a content that holds zero bytes, else 0
    const char* message;
};
class ConverterFaults : public ConverterProgram, public ::testing::WithParamInterface<FaultCase> {};

TEST_P(ConverterFaults, leaveTheOutputAlone) {
    const auto& c = GetParam();
    const std::string content = c.size > 0 ? std::string(c.content, c.size) : c.content;
    const fs::path in = file("in.dbc", content);
    const fs::path old = file("old.json", "old");
    EXPECT_EQ(convert(in, old), 1);
    EXPECT_NE(errors.find(in.string() + c.message), std::string::npos) << errors;
    EXPECT_EQ(corpus::bytesOf(old), "old");
    EXPECT_EQ(convert(in, folder / "new.json"), 1);
    EXPECT_EQ(filesLeft(), 2U);
    EXPECT_EQ(run(QUILL_LDF2JSON, "\"" + in.string() + "\" \"" + old.string() + "\""), 1);
    EXPECT_NE(errors.find(in.string() + ":"), std::string::npos) << errors;
}

INSTANTIATE_TEST_SUITE_P(Inputs, ConverterFaults,
                         ::testing::Values(FaultCase{"empty", "", 0, ":1:1: the file is empty"},
                                           FaultCase{"otherKind", "{\"a\": 1}", 0,
                                                     ":1:1: no DBC statement"},
                                           FaultCase{"noise",
                                                     "\x7f"
                                                     "ELF\0\0\1\2",
                                                     8, ":1:1: not a text file"},
                                           FaultCase{"cut", "BU_: A\nBO_ 5 F: 8 A\n SG_ s : 0|", 0,
                                                     ":3:12: unexpected end of file"},
                                           FaultCase{"openText", "BU_: A\nCM_ \"x\ny", 0,
                                                     ":2:5: text without closing quote"}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(ConverterProgram, filesThatCannotBe) {
    const fs::path in = file("in.dbc", kGood);
    EXPECT_EQ(convert(folder / "gone.dbc", folder / "o.json"), 1);
    EXPECT_NE(errors.find("gone.dbc:1:1: cannot open the file"), std::string::npos) << errors;
    EXPECT_EQ(convert(folder, folder / "o.json"), 1);
    EXPECT_NE(errors.find(":1:1: cannot "), std::string::npos) << errors;
    EXPECT_EQ(convert(in, folder / "no" / "such.json"), 1);
    EXPECT_NE(errors.find("such.json:1:1: cannot create the file"), std::string::npos) << errors;
    fs::create_directory(folder / "taken.json");
    EXPECT_EQ(convert(in, folder / "taken.json"), 1);
    EXPECT_NE(errors.find("taken.json:1:1: cannot put the file in place"), std::string::npos)
        << errors;
    EXPECT_EQ(filesLeft(), 2U);
}

// A parser that fails after it has written much leaves nothing either.
TEST_F(ConverterProgram, lateFailureLeavesNothing) {
    const fs::path in = file("in.txt", "text");
    const int status = quill::dbjson::convertFile(
        in.string(), (folder / "out.json").string(), quill::dbjson::InputText::AsIs,
        [](std::string_view, quill::dbjson::Diagnostics& diagnostics,
           quill::dbjson::JsonWriter& json) {
            json.beginArray();
            for (int i = 0; i < 100000; ++i) {
                json.beginArray();
                json.text("a long enough text to be handed to the file");
                json.endArray();
            }
            diagnostics.fail(0, "in the end");
        });
    EXPECT_EQ(status, 1);
    EXPECT_EQ(filesLeft(), 1U);
}

}  // namespace
