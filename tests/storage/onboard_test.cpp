// The records of onboard disks while their programs answer, and while one of them does not.
#include "storage/onboard.h"

#include "config/logs.h"
#include "fake_programs.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

class Onboard : public testing::Test {
  protected:
    void SetUp() override {
        newHost();
    }

    // A host without disks.
    void newHost() {
        programs.reset();
        programs = std::make_unique<fake_programs>();
        programs->files[hdd_file] = "S1,7\n";
        programs->folders["/dev"] = {"ada", "null"};
        for (const char* line : {"geom disk list", "gpart show -p", "df -k -l", "swapinfo -k"})
            tell(line, "");
        tell("camcontrol devlist", "<a>  at scbus3 target 0 lun 0 (ada1,pass0)\n");
        tell("lspci -v", "00:1f.2 SATA controller: C1 (rev 1)\n");
    }
    // The same, and no disk of before is remembered.
    void forgetDisks() {
        newHost();
        tell("geom disk list", "Geom name: none\n");
        pass();
        newHost();
    }
    void tell(const std::string& line, const std::string& text, int status = 0) {
        programs->print(line, text, status);
    }
    program_answer& answer(const std::string& line) {
        return programs->answers[line];
    }
    void tellDisk(const std::string& disk, const std::string& serial) {
        answer("geom disk list").text += "Geom name: " + disk + "\n Mediasize: 2147483648 (2G)\n";
        answer("gpart show -p").text += "40 9 " + disk + "p2 freebsd-ufs (1.5K)\n";
        answer("df -k -l").text += "/dev/" + disk + "p1 100 70 -3 104% /\n";
        tell("camcontrol identify " + disk, "device model  M1\n");
        tell("smartctl -i -H -A /dev/" + disk,
             "smartctl 7.3\nSerial Number: " + serial + "\nRotation Rate: 7200 rpm\n\n" +
                 "SMART overall-health self-assessment test result: PASSED\n\nSMART Attributes",
             4);
        tell("fdisk " + disk, "cylinders=3 heads=2 sectors/track=5\n");
        for (const char* part : {"p1", "p2"}) {
            programs->folders["/dev"].push_back(disk + part);
            tell("newfs -N /dev/" + disk + part, "block size 4096,");
        }
    }

    // A pass: its records, "?" behind one whose state is not known, "+" at the end when all disks
    // were listed.
    std::string pass() {
        beginAskingCycle();
        programs->asked.clear();
        storage_items items;
        collectOnboard(items, "label");
        std::string records;
        std::size_t place = 0;
        for (const list* item = items.head(); item != nullptr; item = item->next)
            records += item->parm + std::string(items.stateKnown(place++) ? "\n" : "?\n");
        return records + (items.allListed(drive_kind::onboard) ? "+" : "");
    }

    std::unique_ptr<fake_programs> programs;
};

// The records of a disk of tellDisk's, for what may differ in them.
std::string disk(const std::string& name, const std::string& drive, const std::string& rest,
                 const std::string& end = "2;3;30;6;2;IDE;") {
    return "HD;/dev/" + name + ":" + drive + ";" + rest + ";" + end + ";\nPT;/dev/" + name +
           "p1:70.00:71680:-3072:102400:4096:;\nPT;/dev/" + name + "p2:0:N/A:N/A:1536:4096:;\n";
}

TEST_F(Onboard, AsksOnlyWhatIsNeeded) {
    tellDisk("ada0", "S1");
    tellDisk("ada10", "S1x");
    for (const char* other : {"cd0", "nda0", "nvd0", "nvme0ns1", "da3", "da4"})
        tellDisk(other, "S9");
    tell("camcontrol identify da3", "Model Number: an NVMe answer\n");
    programs->answers.erase("camcontrol identify da4");
    const std::string records = disk("ada0", "OK:S1:", "7;HDD;7200;C1;M1") +
                                disk("ada10", "OK:S1x:", ";HDD;7200;C1;M1") + "+";
    EXPECT_EQ(pass(), records);
    const auto count = [this](const std::string& line) {
        return std::count(programs->asked.begin(), programs->asked.end(), line);
    };
    EXPECT_EQ(programs->asked.size(), 6 + 2 * 5 + 2);
    for (const int expected : {0, 1}) { // the controllers stay while the same disks are listed
        EXPECT_EQ(pass(), records);
        EXPECT_EQ(count("lspci -v"), expected);
        tellDisk("cd1", "");
        answer("lspci -v") = {program_end::timed_out, 0, ""}; // and so does what was known of them
    }
}

TEST_F(Onboard, OfARecordedServer) {
    programs.reset();
    programs = std::make_unique<fake_programs>();
    programs->play("freebsd-14");
    for (const std::string& name : programs->folders["/dev"])
        if (name != "ada0p2")
            tell("newfs -N /dev/" + name, "block size 32768,");
    std::ifstream file(std::filesystem::path(__FILE__).parent_path() / "expected/freebsd-14.txt");
    std::string expected;
    for (std::string line; std::getline(file, line) && line != "status 0";)
        expected += line.substr(expected.empty() ? sizeof "[inventory]" : 0) + ";\n";
    EXPECT_EQ(pass(), expected + "+");
}

// Each program fails, from a disk's first pass on or later.
TEST_F(Onboard, NotKnowingIsNoNews) {
    const std::string kind = "7;HDD;7200;C1;M1", geometry = "2;3;30;6;2;IDE;";
    const struct {
        const char* line;             // of the program
        std::string drive, rest, end; // of the record when it fails later
        bool listed;                  // whether all disks count as listed then
        int first;                    // lines when it fails from the start
    } rows[] = {
        {"geom disk list", "OK:S1:", kind, geometry, false, 0},
        {"camcontrol identify ada1", "OK:S1:", "7;;;C1;", geometry, true, 3},
        {"smartctl -i -H -A /dev/ada1", "N/A::", "7;HDD;;C1;M1", geometry, true, 6},
        {"fdisk ada1", "OK:S1:", kind, "2;;;;;IDE;", true, 6},
    };
    const program_answer faults[] = {{program_end::missing, 0, ""},
                                     {program_end::not_started, 0, ""},
                                     {program_end::cut, 0, "Geom name: x\n"},
                                     {program_end::exited, 1, "smartctl 7\n"},
                                     {program_end::exited, 0, "\xff;: x\nSerial Number: S9\n"}};
    for (const auto& row : rows)
        for (const program_answer& fault : faults) {
            SCOPED_TRACE(row.line + (" ends " + std::to_string(static_cast<int>(fault.end))));
            forgetDisks();
            tellDisk("ada0", "S2");
            tellDisk("ada1", "S1");
            const program_answer good = std::exchange(answer(row.line), fault);
            const std::string first = pass();
            EXPECT_EQ(std::count(first.begin(), first.end(), '\n'), row.first);
            const bool silent =
                fault.end == program_end::not_started || fault.end == program_end::cut;
            EXPECT_EQ(first.find('+') != first.npos, row.first > (silent ? 3 : 0));

            answer(row.line) = good;
            const std::string whole = disk("ada0", "OK:S2:", ";HDD;7200;C1;M1");
            EXPECT_EQ(pass(), whole + disk("ada1", "OK:S1:", kind) + "+");
            answer(row.line) = fault;
            std::string records = disk("ada1", row.drive, row.rest, row.end);
            if (row.drive == "N/A::")
                records.insert(records.find('\n'), "?");
            EXPECT_EQ(pass(), whole + records + (row.listed ? "+" : ""));
        }
}

TEST_F(Onboard, AHungDiskCostsItself) {
    tellDisk("ada0", "S2");
    tellDisk("ada1", "S1");
    const std::string records = pass();
    const program_answer good = answer("fdisk ada1");
    const std::string kept = records.substr(0, records.find("HD;/dev/ada1"));
    answer("fdisk ada1").end = program_end::timed_out;
    EXPECT_EQ(pass(), kept + "HD;/dev/ada1:OK:S1:;7;HDD;7200;C1;M1;2;;;;;IDE;;\n"
                             "PT;/dev/ada1p1:70.00:71680:-3072:102400::;\n"
                             "PT;/dev/ada1p2:0:N/A:N/A:1536::;\n+");
    answer("fdisk ada1") = good;
    for (int cycle = 1; cycle < HUNG_CYCLES; ++cycle) {
        EXPECT_EQ(pass(), kept + "HD;/dev/ada1:N/A::;7;;;C1;;2;;;;;IDE;;?\n"
                                 "PT;/dev/ada1p1:70.00:71680:-3072:102400::;\n"
                                 "PT;/dev/ada1p2:0:N/A:N/A:1536::;\n+");
        for (const std::string& line : programs->asked)
            EXPECT_EQ(line.find("ada1"), line.npos) << line;
    }
    EXPECT_EQ(pass(), records);
}

TEST_F(Onboard, ADiskThatLeftIsForgotten) {
    for (const bool identified : {true, false}) {
        forgetDisks();
        tellDisk("ada1", "S1");
        pass();
        const std::string listing =
            std::exchange(answer("geom disk list").text, "Geom name: mfid0\n");
        EXPECT_EQ(pass(), "+");
        answer("geom disk list").text = listing;
        tell("smartctl -i -H -A /dev/ada1", "smartctl 7\n/dev/ada1: Unknown USB bridge\n", 1);
        if (!identified)
            programs->answers.erase("camcontrol identify ada1");
        const std::string records =
            identified ? disk("ada1", "N/A::", "3;USB;;;M1", "2;3;30;6;2;USB;") + "+" : "+";
        EXPECT_EQ(pass(), records);
        answer("camcontrol devlist").text = ""; // it sits where it sat
        EXPECT_EQ(pass(), records);
    }
}

TEST_F(Onboard, AFullPassAsksNoMore) {
    tellDisk("ada0", "S1");
    for (int part = 3; part <= 300; ++part)
        programs->folders["/dev"].push_back("ada0p" + std::to_string(part));
    tellDisk("ada1", "S2");
    const std::string records = pass();
    EXPECT_EQ(std::count(records.begin(), records.end(), '\n'), STORAGE_LINES_MOST);
    EXPECT_EQ(records.back(), '\n');
    EXPECT_EQ(programs->asked.back(), "newfs -N /dev/ada0p255");
}

TEST_F(Onboard, SerialsAreText) {
    for (const std::string serial :
         {"*", "-e", "$(touch x)'\"; x", "`id`\t\\%s%n a;b:c \"&|<", "S1,x"}) {
        newHost();
        std::string plain;
        std::remove_copy_if(serial.begin(), serial.end(), std::back_inserter(plain),
                            [](char c) { return c == ';' || c == ':'; });
        programs->files[hdd_file] = serial + ",12\n";
        tellDisk("ada1", serial);
        EXPECT_EQ(pass(), disk("ada1", "OK:" + plain + ":", "12;HDD;7200;C1;M1") + "+");
    }
}

} // namespace
