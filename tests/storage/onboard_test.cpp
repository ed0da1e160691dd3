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
