#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#ifndef _WIN32
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {
namespace fs = std::filesystem;

struct ToolRun {
    int status = -1;
    std::string output;
};

class Quilltrace : public ::testing::Test {
protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        m_folder = fs::path(QUILL_BINARY_DIR) / "tests" / "quilltrace" / info->name();
        fs::remove_all(m_folder);
        fs::create_directories(m_folder);
    }
    void TearDown() override { fs::remove_all(m_folder); }

    [[nodiscard]] std::string path(const char* name) const { return (m_folder / name).string(); }

    ToolRun run(const std::string& arguments) const {
        const std::string command = std::string(QUILLTRACE) + " " + arguments + " 2>&1";
        ToolRun result;
        std::FILE* pipe = popen(command.c_str(), "r");
        std::array<char, 4096> piece{};
        while (const size_t got = std::fread(piece.data(), 1, piece.size(), pipe)) {
            result.output.append(piece.data(), got);
        }
        const int status = pclose(pipe);
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return result;
    }

    void writeAsc(const char* name, int frames) const {
        std::ofstream file(path(name));
        file << "date Sat Sep 30 15:06:13.191 2017\nbase hex  timestamps absolute\n";
        for (int i = 0; i < frames; ++i) {
            file << "   " << i / 1000 << "." << std::to_string(1000 + i % 1000).substr(1)
                 << "000 1  1" << i % 10 << "0  " << (i % 2 == 0 ? "Rx" : "Tx") << "   d 2 0A 0B\n";
        }
        file << "   99.000000 Li 2d Rx 4 11 22 33 44 checksum = 55 CSM = enhanced\n";
    }

    fs::path m_folder;
};

TEST_F(Quilltrace, everyCommandExplainsItself) {
    for (const char* command : {"", "import", "info", "stats", "export"}) {
        const ToolRun help = run(std::string(command) + " --help");
        EXPECT_EQ(help.status, 0);
        EXPECT_NE(help.output.find("quilltrace"), std::string::npos);
        EXPECT_GT(help.output.size(), 200U) << command;
    }
    EXPECT_EQ(run("").status, 2);
    EXPECT_EQ(run("fly").status, 2);
    EXPECT_EQ(run("import --wings").status, 2);
    EXPECT_EQ(run("import").status, 2);
}

TEST_F(Quilltrace, exitStatusesTellTheFailures) {
    writeAsc("a.asc", 10);
    std::ofstream(path("none.asc")) << "base hex  timestamps absolute\n";
    std::ofstream(path("bad.blf")) << "no trace";
    std::ofstream(path("foreign.qtrace")) << std::string(4096, 'x');
    const auto import = [&](const char* file, const char* database) {
        return run("import " + path(file) + " -o " + path(database)).status;
    };
    EXPECT_EQ(import("a.asc", "t.qtrace"), 0);
    EXPECT_EQ(import("missing.blf", "t.qtrace"), 10);
    EXPECT_EQ(import("bad.blf", "t.qtrace"), 10);
    EXPECT_EQ(import("a.txt", "t.qtrace"), 12);
    EXPECT_EQ(import("a.asc", "foreign.qtrace"), 14);
    EXPECT_EQ(import("none.asc", "t.qtrace"), 16);
    EXPECT_EQ(run("info " + path("missing.qtrace")).status, 14);
    EXPECT_EQ(run("export " + path("t.qtrace") + " -o " + path("a.xyz")).status, 2);
    EXPECT_EQ(run("export " + path("t.qtrace") + " -o " + path("no/such/a.blf")).status, 30);
    std::ofstream(path("cut.asc"))
        << "base hex  timestamps absolute\n1.0 1 1 Rx d 0\n2.0 1 2 Rx d 8 1\n";
    EXPECT_EQ(run("import --strict " + path("cut.asc") + " -o " + path("t.qtrace")).status, 20);
}

// ASC to database to BLF to database to ASC: statistics and frames stay the same.
TEST_F(Quilltrace, conversionThereAndBackKeepsEveryFrame) {
    writeAsc("a.asc", 3000);
    const auto json = [&](const std::string& arguments) {
        const ToolRun result = run(arguments + " --json");
        EXPECT_EQ(result.status, 0) << result.output;
        return nlohmann::json::parse(result.output, nullptr, false);
    };
    const auto first = json("import " + path("a.asc") + " -o " + path("one.qtrace"));
    EXPECT_EQ(first["frames"], 3001);
    EXPECT_EQ(first["alreadyImported"], false);
    EXPECT_EQ(json("import " + path("a.asc") + " -o " + path("one.qtrace"))["alreadyImported"],
              true);
    EXPECT_EQ(json("export " + path("one.qtrace") + " -o " + path("b.blf"))["frames"], 3001);
    EXPECT_EQ(run("export " + path("one.qtrace") + " -o " + path("b.blf")).status, 30)
        << "an existing file is kept";
    EXPECT_EQ(json("import " + path("b.blf") + " -o " + path("two.qtrace"))["frames"], 3001);
    EXPECT_EQ(json("export " + path("two.qtrace") + " -o " + path("c.asc"))["frames"], 3001);
    EXPECT_EQ(json("import " + path("c.asc") + " -o " + path("three.qtrace"))["frames"], 3001);
    const auto one = json("stats " + path("one.qtrace"));
    EXPECT_EQ(one, json("stats " + path("two.qtrace")));
    EXPECT_EQ(one, json("stats " + path("three.qtrace")));
    EXPECT_EQ(one["identifiers"].size(), 11U);
    EXPECT_NEAR(one["identifiers"][0]["cycleMs"].get<double>(), 10, 1e-6);
    const auto info = json("info " + path("one.qtrace"));
    EXPECT_EQ(info[0]["startNs"], json("info " + path("three.qtrace"))[0]["startNs"]);
    EXPECT_FALSE(fs::exists(path("one.qtrace-journal"))) << "left behind";
    EXPECT_EQ(run("info " + path("one.qtrace")).status, 0);
    EXPECT_EQ(run("stats " + path("one.qtrace") + " --top 2").status, 0);
}

#ifndef _WIN32
TEST_F(Quilltrace, interruptCancelsAndLeavesNothing) {
    writeAsc("a.asc", 600'000);
    const pid_t child = fork();
    if (child == 0) {
        execl(QUILLTRACE, QUILLTRACE, "import", "-q", path("a.asc").c_str(), "-o",
              path("t.qtrace").c_str(), static_cast<char*>(nullptr));
        _exit(99);
    }
    // The journal appears with the import's transaction.
    while (!fs::exists(path("t.qtrace")) || fs::file_size(path("t.qtrace")) < 1'000'000) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, WNOHANG), 0) << "ended before it could be interrupted";
    }
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 130);
    const ToolRun info = run("info --json " + path("t.qtrace"));
    EXPECT_EQ(nlohmann::json::parse(info.output, nullptr, false), nlohmann::json::array());
}
#endif

}  // namespace
