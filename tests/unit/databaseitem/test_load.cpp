#include <fstream>
#include <string>
#include <thread>
#include <vector>

#ifndef _WIN32
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>

#include "DatabaseTest.h"
#include "databaseitem/CanArxmlDatabaseItem.h"
#include "databaseitem/CanDbcDatabaseItem.h"
#include "databaseitem/ConverterSettings.h"
#include "databaseitem/LinLdfDatabaseItem.h"

namespace {

using Model::database::CanArxmlDatabaseItem;
using Model::database::CanDbcDatabaseItem;
using Model::database::DatabaseKind;
using Model::database::LinLdfDatabaseItem;
using ::testing::Values;

constexpr const char* kOneFrame =
    R"({"messages": [{"id": 5, "name": "Brake", "signals": [{"name": "Force"}]}]})";

std::string positionsOf(const std::string& text, const std::vector<std::string>& parts) {
    size_t at = 0;
    for (const std::string& part : parts) {
        at = text.find(part, at);
        if (at == std::string::npos) return "missing or out of order: " + part;
    }
    return {};
}

class LoadTest : public DatabaseTest {
protected:
    static void setTimeout(std::chrono::milliseconds timeout) {
        auto settings = Model::database::converterSettings();
        settings.timeout = timeout;
        Model::database::setConverterSettings(settings);
    }
};

TEST_F(LoadTest, stepsAreLoggedInOrderAndTheDocumentStaysBesideTheFile) {
    const std::string file = write("car.v2.dbc", kOneFrame);
    CanDbcDatabaseItem item;
    ASSERT_TRUE(item.pyLoadDB(file)) << logText();
    EXPECT_EQ(item.database()->dbcEntrys.at(0)->signals.at(0)->name, "Force");
    EXPECT_TRUE(exists("car.v2.json"));
    EXPECT_EQ(positionsOf(logText(),
                          {"root dir: " + path("root"), "begin extern parse ...",
                           "end extern parse ...", "begin parseJsonFile ...", "end parseJsonFile"}),
              "");
}

struct FaultCase {
    const char* name;
    const char* file;  // created unless the text is null
    const char* content;
    const char* logged;
};
class LoadFault : public LoadTest, public ::testing::WithParamInterface<FaultCase> {};

TEST_P(LoadFault, failsWithAReasonAndLeavesTheItemEmpty) {
    const FaultCase& fault = GetParam();
    CanDbcDatabaseItem item;
    ASSERT_TRUE(item.pyLoadDB(write("before.dbc", kOneFrame)));
    const std::string file =
        fault.content != nullptr ? write(fault.file, fault.content) : path(fault.file);
    EXPECT_FALSE(item.pyLoadDB(file));
    EXPECT_NE(logText().find(fault.logged), std::string::npos) << logText();
    EXPECT_TRUE(item.database()->dbcEntrys.empty());
    EXPECT_FALSE(item.lastError().empty());
    EXPECT_EQ(item.find({5, "Brake", false, false}), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Files, LoadFault,
    Values(
        FaultCase{"missing", "nowhere.dbc", nullptr, "no exist "},
        FaultCase{"folder", "root", nullptr, "File path is invalid, File Path: "},
        FaultCase{"folderWithSuffix", "dir.dbc/x", "", "no converter"},
        FaultCase{"otherSuffix", "a.txt", "{}", "File path is invalid, File Path: "},
        FaultCase{"noSuffix", "plain", "{}", "File path is invalid, File Path: "},
        FaultCase{"otherKind", "a.ldf", "{}", "File path is invalid, File Path: "},
        FaultCase{"converterFails", "a.dbc", "!fail", ":3:7: unexpected word"},
        FaultCase{"converterFailsLine", "a.dbc", "!fail", "dbFile2Json failed, dbc path: "},
        FaultCase{"converterCrashes", "a.dbc", "!abort", "converter crashed"},
        FaultCase{"converterWritesNothing", "a.dbc", "!nothing",
                  "parseJsonFile failed, json file path : "},
        FaultCase{"converterPrintsMuch", "a.dbc", "!flood", "line 0 of many"},
        FaultCase{"emptyDocument", "a.dbc", "", "parseJsonFile failed, json file path : "},
        FaultCase{"brokenDocument", "a.dbc", "{\"messages\": [\n  {\"id\": }]}", "a.json:2:"},
        FaultCase{"cutDocument", "a.dbc", "{\"messages\": [{\"id\": 5", "a.json:1:"},
        FaultCase{"arrayAtTheTop", "a.dbc", "[1]", "expected an object at the top"},
        FaultCase{"noise", "a.json", "\x01\xff\x80{", "a.json:1:"},
        FaultCase{"messagesNoArray", "a.json", R"({"messages": 5})", "messages: expected an array"},
        FaultCase{"messageNoObject", "a.json", R"({"messages": [{}, 5]})",
                  "messages[1]: expected an object"},
        FaultCase{"idNoNumber", "a.json", R"({"messages": [{"id": true}]})",
                  "messages[0].id: expected an integer"},
        FaultCase{"idFraction", "a.json", R"({"messages": [{"id": 1.5}]})", "expected an integer"},
        FaultCase{"idTooLarge", "a.json", R"({"messages": [{"id": 4294967296}]})", "32 bits"},
        FaultCase{"signalWrong", "a.json",
                  R"({"messages": [{"signals": [{}, {"start_bit": [1]}]}]})",
                  "messages[0].signals[1].start_bit: expected an integer"},
        FaultCase{"nameNoText", "a.json", R"({"messages": [{"name": 7}]})", "expected a text"},
        FaultCase{"flagNoBoolean", "a.json", R"({"messages": [{"is_fd": "yes"}]})",
                  "expected a boolean"},
        FaultCase{"factorNoNumber", "a.json", R"({"messages": [{"signals": [{"factor": {}}]}]})",
                  "expected a number"}),
    [](const auto& each) { return std::string(each.param.name); });

TEST_F(LoadTest, deepNestingIsRefused) {
    const std::string deep(100'000, '[');
    CanDbcDatabaseItem item;
    EXPECT_FALSE(item.pyLoadDB(write("deep.json", "{\"messages\": " + deep)));
}

TEST_F(LoadTest, emptyPathAndZeroByteAreInvalid) {
    CanDbcDatabaseItem item;
    EXPECT_FALSE(item.pyLoadDB(""));
    EXPECT_FALSE(item.pyLoadDB(std::string("a\0b.dbc", 7)));
    EXPECT_FALSE(item.pyLoadDB("/" + std::string(5000, 'x') + ".dbc"));
    EXPECT_NE(logText().find("File path is invalid, File Path: \n"), std::string::npos);
}

TEST_F(LoadTest, missingConverterIsNamed) {
    std::filesystem::remove_all(m_folder / "root" / "public");
    CanDbcDatabaseItem item;
    EXPECT_FALSE(item.pyLoadDB(write("a.dbc", kOneFrame)));
    EXPECT_NE(logText().find("start process error: "), std::string::npos);
    EXPECT_NE(logText().find(", executeName: " + path("root")), std::string::npos);
    EXPECT_NE(logText().find("--jsonExportAll"), std::string::npos);
}

TEST_F(LoadTest, converterBesideTheModuleIsTheSecondChoice) {
    auto settings = Model::database::converterSettings();
    settings.fallbackFolder = settings.rootFolder;
    settings.rootFolder = path("elsewhere");
    Model::database::setConverterSettings(settings);
    CanDbcDatabaseItem item;
    EXPECT_TRUE(item.pyLoadDB(write("a.dbc", kOneFrame)));
}

TEST_F(LoadTest, hangingConverterIsEnded) {
    setTimeout(std::chrono::milliseconds(300));
    CanDbcDatabaseItem item;
    EXPECT_FALSE(item.pyLoadDB(write("a.dbc", "!hang")));
    EXPECT_NE(item.lastError().find("time was up"), std::string::npos);
    EXPECT_FALSE(exists("a.json.123456789.tmp"));
}

// A process that is killed takes its converter along; nobody is left to clean up.
TEST_F(LoadTest, leftoversOfKilledConvertersGoWithTheNextLoad) {
    const char* const leftovers[] = {"a.json.1.tmp", "a.json.99999999999999.tmp"};
    const char* const others[] = {"a.json.tmp",   "a.json..tmp",   "a.json.1x.tmp",
                                  "b.json.1.tmp", "a.json.1.tmp2", "xa.json.1.tmp"};
    for (const char* name : leftovers) write(name, "{");
    for (const char* name : others) write(name, "{");
    CanDbcDatabaseItem item;
    EXPECT_TRUE(item.pyLoadDB(write("a.dbc", kOneFrame)));
    for (const char* name : leftovers) EXPECT_FALSE(exists(name)) << name;
    for (const char* name : others) EXPECT_TRUE(exists(name)) << name;
}

TEST_F(LoadTest, waitingCanBeInterrupted) {
    auto settings = Model::database::converterSettings();
    settings.interrupted = [] { return true; };
    Model::database::setConverterSettings(settings);
    CanDbcDatabaseItem item;
    EXPECT_FALSE(item.pyLoadDB(write("a.dbc", "!hang")));
    EXPECT_NE(item.lastError().find("interrupted"), std::string::npos);
    EXPECT_FALSE(exists("a.json.123456789.tmp"));
}

TEST_F(LoadTest, jsonFileIsReadAsItIsAndStays) {
    const std::string file = write("own.JSON", "\xEF\xBB\xBF" + std::string(kOneFrame));
    CanDbcDatabaseItem item;
    EXPECT_TRUE(item.pyLoadDB(file));
    EXPECT_TRUE(exists("own.JSON"));
    EXPECT_EQ(logText().find("extern parse"), std::string::npos);
}

TEST_F(LoadTest, foreignDocumentIsReplacedWithAWarning) {
    write("vehicle.json", R"({"mine": [1, 2]})");
    CanDbcDatabaseItem item;
    EXPECT_TRUE(item.pyLoadDB(write("vehicle.dbc", kOneFrame)));
    EXPECT_NE(logText().find("warning [Database] " + path("vehicle.json")), std::string::npos);
    const std::string before = logText();
    EXPECT_TRUE(item.pyLoadDB(path("vehicle.dbc")));
    EXPECT_EQ(logText().substr(before.size()).find("warning"), std::string::npos);
}

TEST_F(LoadTest, folderInTheDocumentsPlaceIsAFailure) {
    std::filesystem::create_directories(m_folder / "a.json");
    CanDbcDatabaseItem item;
    EXPECT_FALSE(item.pyLoadDB(write("a.dbc", kOneFrame)));
    EXPECT_NE(item.lastError().find("is a directory"), std::string::npos);
}

TEST_F(LoadTest, unusualPathsWork) {
    for (const std::string& name :
         {std::string("with some blanks.dbc"), std::string("f\xC3\xBC\xC3\x9F/\xE8\xBD\xA6.dbc"),
          std::string("quote'\"$x.dbc"),
          "long/" + std::string(120, 'a') + "/" + std::string(120, 'b') + "/" +
              std::string(100, 'c') + ".dbc",
          std::string("UPPER.DBC")}) {
        CanDbcDatabaseItem item;
        EXPECT_TRUE(item.pyLoadDB(write(name, kOneFrame))) << name << logText();
        EXPECT_EQ(item.database()->dbcEntrys.size(), 1u);
    }
}

TEST_F(LoadTest, relativePathsWork) {
    write("a.dbc", kOneFrame);
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder);
    CanDbcDatabaseItem item;
    EXPECT_TRUE(item.pyLoadDB("a.dbc"));
    std::filesystem::current_path(before);
}

TEST_F(LoadTest, everyKindHasItsArguments) {
    CanArxmlDatabaseItem arxml;
    EXPECT_TRUE(arxml.loadDB(write("a.arxml", R"({"can_cluster": []})"), DatabaseKind::Arxml));
    LinLdfDatabaseItem ldf;
    EXPECT_TRUE(ldf.loadDB(write("b.ldf", R"({"frames": []})"), DatabaseKind::Ldf));
}

TEST_F(LoadTest, manyThreadsOnOneFileAllGetWholeAnswers) {
    const std::string dbc = write("shared.dbc", kOneFrame);
    const std::string ldf = write("shared.ldf", R"({"frames": [{"id": 1, "name": "L"}]})");
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 15; ++i) {
                CanDbcDatabaseItem can;
                LinLdfDatabaseItem lin;
                // Both kinds share one document name, so each must read the one of its own run.
                const bool ok = t % 2 == 0
                                    ? can.pyLoadDB(dbc) && can.database()->dbcEntrys.size() == 1
                                    : lin.pyLoadDB(ldf) && lin.database()->frame.size() == 1;
                if (!ok) ++wrong;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0) << logText();
}

TEST_F(LoadTest, documentRemovedByAStrangerIsMadeAgain) {
    const std::string dbc = write("shared.dbc", kOneFrame);
    std::atomic<bool> stop{false};
    std::thread remover([&] {
        while (!stop) {
            std::error_code error;
            std::filesystem::remove(m_folder / "shared.json", error);
            std::this_thread::yield();
        }
    });
    int wrong = 0;
    for (int i = 0; i < 30; ++i) {
        CanDbcDatabaseItem item;
        // A failure is allowed, half a database is not.
        if (item.pyLoadDB(dbc) != (item.database()->dbcEntrys.size() == 1)) ++wrong;
    }
    stop = true;
    remover.join();
    EXPECT_EQ(wrong, 0);
}

#ifndef _WIN32
TEST_F(LoadTest, twoProcessesOnOneFileBothGetWholeAnswers) {
    const std::string dbc = write("shared.dbc", kOneFrame);
    std::vector<pid_t> children;
    for (int c = 0; c < 3; ++c) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            bool ok = true;
            for (int i = 0; i < 20; ++i) {
                CanDbcDatabaseItem item;
                ok = item.pyLoadDB(dbc) && item.database()->dbcEntrys.size() == 1 && ok;
            }
            ::_exit(ok ? 0 : 1);
        }
        children.push_back(pid);
    }
    for (const pid_t pid : children) {
        int status = -1;
        ASSERT_EQ(::waitpid(pid, &status, 0), pid);
        EXPECT_EQ(status, 0);
    }
}

TEST_F(LoadTest, protectedFilesAndFoldersAreNamed) {
    const std::string hidden = write("hidden.dbc", kOneFrame);
    const std::string locked = write("locked/a.dbc", kOneFrame);
    const std::string old = write("old/a.dbc", kOneFrame);
    write("old/a.json", "{}");
    ::chmod(hidden.c_str(), 0000);
    ::chmod(path("locked").c_str(), 0555);
    ::chmod(path("old").c_str(), 0555);
    const bool root = ::geteuid() == 0;
    ASSERT_TRUE(!root || ::seteuid(65534) == 0);  // root may read and write everything
    CanDbcDatabaseItem item;
    EXPECT_FALSE(item.pyLoadDB(hidden));
    EXPECT_NE(item.lastError().find("Permission denied"), std::string::npos) << item.lastError();
    EXPECT_FALSE(item.pyLoadDB(locked));
    EXPECT_NE(item.lastError().find("may not be written"), std::string::npos) << item.lastError();
    EXPECT_FALSE(item.pyLoadDB(old));
    EXPECT_NE(item.lastError().find("cannot replace"), std::string::npos) << item.lastError();
    ASSERT_TRUE(!root || ::seteuid(0) == 0);
    ::chmod(path("locked").c_str(), 0755);
    ::chmod(path("old").c_str(), 0755);
}
#endif

TEST(Context, isKeptInTheProjectAsBytes) {
    CanDbcDatabaseItem item;
    item.setContext({std::string("\0\xff raw", 6), ""});
    QJsonObject storage{{QStringLiteral("other"), 1}};
    item.saveTo(storage);
    EXPECT_EQ(storage.size(), 2);
    CanDbcDatabaseItem back;
    ASSERT_TRUE(back.restoreFrom(storage));
    EXPECT_EQ(back.context(), item.context());
    storage.insert(QStringLiteral("context"), QJsonArray{5});
    EXPECT_FALSE(back.restoreFrom(storage));
    EXPECT_EQ(back.context(), item.context());
    EXPECT_TRUE(back.restoreFrom({}));
    EXPECT_TRUE(back.context().empty());
}

}  // namespace
