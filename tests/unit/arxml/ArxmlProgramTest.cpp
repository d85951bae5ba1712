// The program itself: its arguments, what it leaves behind and what it says about bad files.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "ArxmlTestSupport.h"

namespace arxmltest {
namespace {

namespace fs = std::filesystem;

struct Outcome {
    int status = -1;
    std::string out, err;
};

class ArxmlProgram : public ::testing::Test {
protected:
    void SetUp() override {
        m_folder = fs::temp_directory_path() /
                   ("arxml test \xC3\xA4 " + std::to_string(std::random_device{}()));
        fs::create_directories(m_folder);
    }
    void TearDown() override { fs::remove_all(m_folder); }

    std::string path(const std::string& name) const { return (m_folder / name).string(); }

    std::string write(const std::string& name, const std::string& text) const {
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }

    Outcome run(const std::vector<std::string>& args) const {
        std::string command = "\"" QUILL_ARXML_PROGRAM "\"";
        for (const auto& arg : args) command += " \"" + arg + "\"";
        command += " > \"" + path("out") + "\" 2> \"" + path("err") + "\"";
#ifdef _WIN32
        const int status = std::system(("\"" + command + "\"").c_str());
#else
        const int status = WEXITSTATUS(std::system(command.c_str()));
#endif
        return {status, readText(path("out")), readText(path("err"))};
    }

    Outcome convert(const std::string& input, const char* command = "arxml-parse") const {
        return run({command, input, "--outputPath", path("result.json")});
    }

    bool hasLeftovers() const {
        for (const auto& entry : fs::directory_iterator(m_folder)) {
            if (entry.path().extension() == ".tmp") return true;
        }
        return false;
    }

    fs::path m_folder;
};

TEST_F(ArxmlProgram, writesTheJsonOfEachCommand) {
    const Outcome arxml = convert(dataFile("backbone.arxml"));
    EXPECT_EQ(arxml.status, 0) << arxml.err;
    EXPECT_EQ(Json::parse(readText(path("result.json"))).at("eth_cluster").size(), 1U);
    const Outcome fibex = convert(dataFile("chassis_fibex.xml"), "fibex-parse");
    EXPECT_EQ(fibex.status, 0) << fibex.err;
    EXPECT_EQ(Json::parse(readText(path("result.json"))).at("flexray_cluster").size(), 1U);
    EXPECT_FALSE(hasLeftovers());
}

TEST_F(ArxmlProgram, explainsItself) {
    const Outcome help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("arxml-parse INPUT --outputPath"), std::string::npos);
    const Outcome version = run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out.rfind("database-parser-ts ", 0), 0U);
}

TEST_F(ArxmlProgram, refusesWrongArguments) {
    const std::string input = dataFile("backbone.arxml");
    for (const auto& args :
         std::vector<std::vector<std::string>>{{},
                                               {"arxml-parse"},
                                               {"arxml-parse", input},
                                               {"parse", input, "--outputPath", "x"},
                                               {"arxml-parse", input, "--outputPath"},
                                               {"arxml-parse", input, "--what", "x"}}) {
        const Outcome wrong = run(args);
        EXPECT_EQ(wrong.status, 2);
        EXPECT_NE(wrong.err.find("usage:"), std::string::npos);
    }
}

// Each bad file ends with status 1 and a line that starts with its place, and an older result
// stays as it was.
TEST_F(ArxmlProgram, badFilesLeaveTheOldResult) {
    const std::string good = readText(dataFile("backbone.arxml"));
    std::string noise(5000, '\0');
    std::mt19937 random(99);
    for (char& c : noise) c = static_cast<char>(random());
    const struct {
        const char* name;
        std::string text;
        const char* place;  // behind the path
    } cases[] = {
        {"empty.arxml", "", ":1:1: the file is empty"},
        {"noise.arxml", noise, ":1:1: not a text file"},
        {"other.arxml", "VERSION \"\"\nBO_ 1 A: 8 B\n", ":1:1: this is not an XML file"},
        {"root.arxml", "<?xml version='1.0'?>\n<html></html>", ":2:2: the root element is html"},
        {"cut.arxml", good.substr(0, good.size() / 2), ": not well-formed XML"},
        {"mismatch.arxml", "<AUTOSAR>\n  <A>\n  </B>\n</AUTOSAR>", ":3:"},
    };
    for (const auto& row : cases) {
        write("result.json", "old");
        const std::string input = write(row.name, row.text);
        const Outcome bad = convert(input);
        EXPECT_EQ(bad.status, 1) << row.name;
        EXPECT_EQ(bad.err.rfind(input + ":", 0), 0U) << bad.err;
        EXPECT_NE(bad.err.find(row.place), std::string::npos) << bad.err;
        EXPECT_EQ(readText(path("result.json")), "old") << row.name;
    }
    EXPECT_FALSE(hasLeftovers());
}

TEST_F(ArxmlProgram, filesThatCannotBeReadOrWritten) {
    EXPECT_EQ(convert(path("missing.arxml")).status, 1);
    EXPECT_EQ(convert(m_folder.string()).status, 1);
    const Outcome noFolder =
        run({"arxml-parse", dataFile("backbone.arxml"), "--outputPath", path("no/such/x.json")});
    EXPECT_EQ(noFolder.status, 1);
    EXPECT_NE(noFolder.err.find("cannot create the file"), std::string::npos) << noFolder.err;
}

TEST_F(ArxmlProgram, readsOtherEncodings) {
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"windows-1252\"?>"
        "<AUTOSAR xmlns=\"http://autosar.org/3.2.3\"><TOP-LEVEL-PACKAGES>"
        "<AR-PACKAGE><SHORT-NAME>P</SHORT-NAME><ELEMENTS><CAN-CLUSTER>"
        "<SHORT-NAME>T\xFCr</SHORT-NAME></CAN-CLUSTER></ELEMENTS>"
        "</AR-PACKAGE></TOP-LEVEL-PACKAGES></AUTOSAR>";
    const Outcome run = convert(write("latin.arxml", text));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(Json::parse(readText(path("result.json")))["can_cluster"][0]["name"], "T\xC3\xBCr");
}

TEST_F(ArxmlProgram, oneLongLineOfManyMegabytes) {
    std::string text = "<AUTOSAR xmlns='http://autosar.org/schema/r4.0'><AR-PACKAGES>";
    while (text.size() < (size_t{8} << 20))
        text += "<SHORT-NAME>" + std::string(200, 'x') + "</SHORT-NAME>";
    const Outcome run = convert(write("line.arxml", text));
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("line.arxml:1:"), std::string::npos);
}

}  // namespace
}  // namespace arxmltest
