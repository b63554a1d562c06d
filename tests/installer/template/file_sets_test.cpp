// Install types, file sets and their files; log destinations; alias destinations.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "installer/template/template_helpers.h"

using quilbtest::LoadedTemplate;

namespace {

TEST(FileSets, LogDestination)
{
    struct Case
    {
        const char* logList;
        int mask;
    } cases[] = {
        { nullptr, 1 },
        { "", 1 },
        { "Uninstall", 1 },
        { "uninstall", 1 },
        { "Cleanup", 2 },
        { "Uninstall;Cleanup", 3 },
        { "Cleanup;None", 0 },
        { "None;Cleanup", 0 },
        { "Bogus", 0 },
        { "Bogus;CLEANUP", 2 },
        { ";;Cleanup;", 2 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.logList ? c.logList : "(null)");
        EXPECT_EQ(c.mask, Installer::getLogDestination(c.logList));
    }
}

void addCabinetRecord(Installer& engine, const char* alias, uint64_t size)
{
    CabinetFile record;
    memset(&record, 0, sizeof(record));
    TeskUtils::copyBounded(record.alias, alias, sizeof(record.alias));
    record.size = size;
    engine.cabinetFiles.append(record);
}

TEST(FileSets, TablesFromTheTemplate)
{
    LoadedTemplate t;
    ASSERT_TRUE(t.loadFile("file_sets.xml"));
    Installer& engine = *t.installer;
    engine.SetVar("STRIP", "1");
    addCabinetRecord(engine, "buildapp.exe", 1);
    addCabinetRecord(engine, "readme", 42);
    addCabinetRecord(engine, "buildapp.exe", 99);
    ASSERT_EQ(0, engine.GetFilesInfo());

    ASSERT_EQ(2, engine.installTypes.count);
    EXPECT_STREQ("Typical", engine.installTypes[0].name);
    EXPECT_STREQ("The usual files", engine.installTypes[0].desc);
    EXPECT_EQ(1, engine.installTypes[0].defaultType);
    EXPECT_EQ(0, engine.installTypes[1].defaultType); // Default without EditFileSets

    ASSERT_EQ(2, engine.fileSets.count);
    EXPECT_STREQ("Main", engine.fileSets[0].name);
    EXPECT_STREQ("Main files", engine.fileSets[0].desc);
    EXPECT_STREQ("[EDITION]==0", engine.fileSets[0].condition);
    EXPECT_STREQ("Extra", engine.fileSets[1].name);

    // "set dest alias name size flags log", flags as E(xpand) X(ecutable) O(kIfMissing)
    // S(tripExeExt) B(ackupExisting); within a set the files stand in reverse order.
    const char* expected[] = {
        "0 [TARGET] folder folder/ 0 ----- 1",
        "0 [TARGET]/tools install_toolsuninstaller.bin uninstaller.bin 0 ----- 1",
        "0 [TARGET]//doc readme readme.txt 42 E-O-B 0",
        "0 [TARGET]/bin buildapp.exe app.exe 99 -X-S- 3",
        "1 /x a:b y.txt 0 ----- 0",
    };
    ASSERT_EQ(5, engine.fileNames.count);
    for (int i = 0; i < 5; ++i) {
        const FILENAMES& f = engine.fileNames[i];
        std::string flags = std::string(f.expandVarsInFile ? "E" : "-") + (f.executable ? "X" : "-")
            + (f.okIfMissing ? "O" : "-") + (f.stripExeExt ? "S" : "-") + (f.backupExisting ? "B" : "-");
        EXPECT_EQ(expected[i],
            std::to_string(f.fileSet) + " " + f.dest + " " + f.alias + " " + f.name + " "
                + std::to_string(f.size) + " " + flags + " " + std::to_string(f.log));
    }

    engine.freeFilesInfo();
    EXPECT_EQ(0, engine.fileNames.count);
    engine.SetVar("STRIP", "0");
    ASSERT_EQ(0, engine.GetFilesInfo());
    EXPECT_FALSE(engine.fileNames[3].stripExeExt);
}

TEST(FileSets, LongTextsAreCut)
{
    LoadedTemplate t;
    std::string dest(600, 'd'), text(300, 't'), condition(600, 'c');
    t.loadText("<QuilbGroupInstallation><FileSet Name='S' Condition='" + condition + "'><FN Dest='" + dest
        + "' Condition='" + condition + "'>" + text + "</FN></FileSet></QuilbGroupInstallation>");
    ASSERT_EQ(0, t.installer->GetFilesInfo());
    ASSERT_EQ(1, t.installer->fileNames.count);
    const FILENAMES& file = t.installer->fileNames[0];
    EXPECT_EQ(518u, strlen(file.dest));
    EXPECT_EQ(258u, strlen(file.alias));
    EXPECT_EQ(258u, strlen(file.name));
    EXPECT_EQ(510u, strlen(file.condition));
    EXPECT_EQ(510u, strlen(t.installer->fileSets[0].condition));
}

TEST(FileSets, AliasDestination)
{
    LoadedTemplate t;
    ASSERT_TRUE(t.loadFile("file_sets.xml"));
    t.installer->SetVar("TARGET", "/opt/t");
    struct Case
    {
        const char* alias;
        int size;
        const char* out;
    } cases[] = {
        { "readme", 520, "/opt/t/doc/readme.txt" },
        { "other", 520, "/opt/t/other.txt" }, // any child of a file set with that Alias
        { "readme", 5, "/opt" },
        { "install_toolsuninstaller.bin", 520, "untouched" }, // derived aliases never match
        { "README", 520, "untouched" },
        { nullptr, 520, "untouched" },
        { "readme", 0, "untouched" },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.alias ? c.alias : "(null)");
        char out[520] = "untouched";
        EXPECT_EQ(-1, t.installer->GetAliasDestination(c.alias, out, c.size));
        EXPECT_STREQ(c.out, out);
    }
}

} // namespace
