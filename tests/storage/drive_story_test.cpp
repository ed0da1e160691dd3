// Drives of all kinds degrade, fail, go missing and come back; the BMC's event log follows, and
// what a program does not tell is no news.
#include "bmc_test.h"
#include "config/configuration.h"
#include "config/logs.h"
#include "fake_programs.h"
#include "storage/inventory.h"
#include "text.h"

#include <cstdio>
#include <sstream>

namespace {

constexpr std::size_t ACTS = 6;

// A line tells a drive's life: kind, slot, then what its tool says of it in each act, and after
// ":" the events that the BMC gets then, "+" asserted and "-" deasserted. "gone" is a drive that
// the tool does not list. "_" stands for a blank.
// The kinds, in the order of a pass: drives behind SAS3008 controllers in IT and in IR mode,
// onboard disks, drives of a RAID card.
constexpr const char* STORY = R"(
it 0  Optimal       Degraded:+A2  Failed:+A1-A2    Rebuilding:+A7-A1  gone:+A0  Optimal:-A0-A7
it 1  Ready         Hot_Spare:+A3 Out_of_Sync:+A5-A3 Optimal:-A5    Standby   Missing:+A0
it 2  Degraded:+A2  Ready:-A2     Hot_Spare:+A3    Ready:-A3          Failed:+A1 Degraded:+A2-A1
it 3  Failed:+A1    Missing:+A0   Rebuilding:-A0+A7-A1 Optimal:-A7    gone:+A0  gone
it 4  Hot_Spare:+A3 Out_of_Sync:+A5-A3 gone:+A0    Failed:-A0+A1-A5   Optimal:-A1 Optimal
it 5  Out_of_Sync:+A5 Ready:-A5   Ready            gone:+A0           gone      Degraded:-A0+A2
it 6  Rebuilding:+A7 Optimal:-A7  Optimal          Optimal            Optimal   Optimal
it 70 gone          Optimal:-A0   gone:+A0         gone               Failed:-A0+A1 Failed
it 8  gone          Hot_Spare:-A0+A3 Optimal:-A3   Optimal            Optimal   Optimal
ir 0  Optimal       Degraded:+A2  Out_of_Sync:+A5-A2 Optimal:-A5      gone:+A0  Optimal:-A0
ir 1  Failed        Rebuilding    Hot_Spare        Ready              Missing:+A0 Failed:-A0
ir 2  Degraded:+A2  Optimal:-A2   Out_of_Sync:+A5  gone:+A0           Optimal:-A0-A5 Optimal
ir 3  Out_of_Sync:+A5 Optimal:-A5 Optimal          Optimal            Optimal   gone:+A0
hd 0  passed        passed_but:+A2 failed:+A1-A2   passed:-A1         gone:+A0  passed:-A0
hd 1  failed:+A1    passed_but:+A2 passed:-A2      failed:+A1         gone:+A0  passed_but:-A0+A2
hd 2  gone          failed:-A0+A1 silent           passed:-A1         passed    passed
hd 3  passed_but:+A2 failed:+A1-A2 failed          silent             gone:+A0  failed:-A0
raid 0 Onln         UBad:+A1      UBUnsp:+A1-A1    Onln:-A1           gone:+A0  Onln:-A0
raid 1 UGood        DHS:+A3       GHS:+A3-A3       HSPShld:+A3-A3     Rbld:+A7-A3 Onln:-A7
raid 2 UBad:+A1     UGood:-A1     DHS:+A3          Onln:-A3           GHS:+A3   gone:+A0
raid 3 UBUnsp:+A1   UGood:-A1     HSPShld:+A3      UGood:-A3          UGUnsp    Offln
raid 4 DHS:+A3      Rbld:+A7-A3   gone:+A0         UBad:-A0+A1-A7     UBad      gone:+A0
raid 5 GHS:+A3      Rbld:+A7-A3   Onln:-A7         Onln               Onln      Onln
raid 6 HSPShld:+A3  UGShld:-A3    gone:+A0         gone               gone      Onln:-A0
raid 7 Rbld:+A7     UBUnsp:+A1-A7 Onln:-A1         Onln               Onln      Onln
raid 8 gone         UBUnsp:-A0+A1 Onln:-A1         Onln               Onln      Onln
)";

struct life {
    std::string kind;
    int slot = 0;
    std::string states[ACTS];
    std::string events[ACTS];
};

std::vector<life> lives() {
    std::vector<life> all;
    std::istringstream story(STORY);
    for (life one; story >> one.kind >> one.slot; all.push_back(one))
        for (std::size_t act = 0; act < ACTS; ++act) {
            std::string told;
            story >> told;
            const std::size_t colon = told.find(':');
            one.states[act] = told.substr(0, colon);
            one.events[act] = colon == told.npos ? "" : told.substr(colon + 1);
            std::replace(one.states[act].begin(), one.states[act].end(), '_', ' ');
        }
    return all;
}

std::string hex(const char* format, int slot) {
    char text[64];
    std::snprintf(text, sizeof text, format, static_cast<unsigned>(slot));
    return text;
}

// The events of an act. A pass tells its drives, then what it misses: onboard, then IT, then IR and
// RAID-card drives, each list in the order of first appearance. A missing IR or RAID drive has the
// sensor and the drive bytes of an IT drive.
Lines events(const std::vector<life>& drives, std::size_t act) {
    Lines present, missing[6];
    for (const life& drive : drives) {
        const bool onboard = drive.kind == "hd", it = drive.kind == "it", ir = drive.kind == "ir";
        for (std::string rest = drive.events[act]; !rest.empty(); rest.erase(0, 3)) {
            const std::string type = (rest[0] == '+' ? "70 " : "F0 ") + rest.substr(1, 2);
            const char* const place = onboard ? " %02X FF"
                                      : it    ? " %02X 02"
                                      : ir    ? " %02X 42"
                                              : " %02X 3C";
            if (type == "70 A0")
                missing[(onboard ? 0
                         : it    ? 2
                                 : 4) +
                        (drive.states[0] == "gone")]
                    .push_back((onboard ? "FF " : "5F ") + type + hex(place, drive.slot));
            else
                present.push_back((it ? "5F " : "FF ") + type +
                                  hex(it ? " %02X 02" : " %02X FF", drive.slot + (ir ? 16 : 0)));
        }
    }
    for (const Lines& late : missing)
        present.insert(present.end(), late.begin(), late.end());
    return present;
}

// What sas3ircu tells of the controller with the drives of a kind.
std::string display(const std::vector<life>& drives, std::size_t act, const std::string& kind) {
    std::string text = "Controller information\n  Controller type : SAS3008\n  RAID Support : " +
                       std::string(kind == "ir" ? "Yes" : "No") +
                       "\nIR Volume information\nPhysical device information\n";
    for (const life& drive : drives)
        if (drive.kind == kind && drive.states[act] != "gone")
            text += "Device is a Hard disk\n  Enclosure # : 2\n  Slot # : " +
                    std::to_string(drive.slot) + "\n  State : " + drive.states[act] +
                    " (XYZ)\n  Drive Type : SATA_HDD\n";
    return text + "Enclosure information\n";
}

// What storcli tells of the RAID card.
std::string card(const std::vector<life>& drives, std::size_t act) {
    const std::string rule(40, '-');
    std::string text = "Controller = 0\nProduct Name = X9\nPD LIST :\n" + rule +
                       "\nEID:Slt DID State   DG Size\n" + rule + "\n";
    for (const life& drive : drives)
        if (drive.kind == "raid" && drive.states[act] != "gone")
            text += "252:" + std::to_string(drive.slot) + "     1 " + drive.states[act] + "\n";
    return text + rule + "\nUBad-Unconfigured Bad|Onln-Online|GHS-Global Hotspare\n";
}

std::string health(const std::string& state) {
    if (state == "silent")
        return "";
    return "SMART overall-health self-assessment test result: " +
           std::string(state == "failed" ? "FAILED!\n" : "PASSED\n") +
           (state == "passed but" ? "Please note the following marginal Attributes:\nID#\n" : "");
}

class DriveStory : public BmcTest {
  protected:
    void begin(std::size_t act) {
        programs.print("sas3ircu list", "   0  SAS3008 1 2\n   1  SAS3008 1 2\n");
        programs.print("sas3ircu 0 display", display(drives, act, "it"));
        programs.print("sas3ircu 1 display", display(drives, act, "ir"));
        programs.print("storcli show", "Number of Controllers = 1\n  0 RAIDX9  8 28\n");
        programs.print("storcli /c0 show", card(drives, act));
        std::string disks;
        for (const life& drive : drives) {
            if (drive.kind != "hd" || drive.states[act] == "gone")
                continue;
            const std::string slot = std::to_string(drive.slot), disk = "ada" + slot;
            disks += "Geom name: " + disk + "\n";
            programs.print("camcontrol identify " + disk, "device model  M\n");
            programs.print("smartctl -i -H -A /dev/" + disk, "smartctl 7.4\nSerial Number: HD" +
                                                                 slot + "\n" +
                                                                 health(drive.states[act]));
            programs.files[hdd_file] += "HD" + slot + "," + slot + "\n";
        }
        programs.print("geom disk list", disks);
        programs.files[ini_file] = "raidCards = \"raidx9\"\n";
    }

    // The events of a pass.
    Lines pass() {
        bmc->forget();
        for (int cycle = 0; cycle < HUNG_CYCLES; ++cycle)
            beginAskingCycle();
        getSmartStorageUsage();
        static_first_init = 0;
        Lines told;
        for (const Bytes& record : bmc->sent(0x04, 0x02)) {
            std::string bytes;
            for (std::size_t at = 3; at < record.size(); ++at)
                bytes += hex(at == 3 ? "%02X" : " %02X", record[at]);
            told.push_back(bytes);
        }
        return told;
    }

    const std::vector<life> drives = lives();
    fake_programs programs;
};

TEST_F(DriveStory, IsToldToTheBmc) {
    raidCard3rdParty = 1;
    static_first_init = 1;
    const program_answer broken[ACTS] = {
        {program_end::timed_out, 0, ""}, {program_end::not_started, 0, ""},
        {program_end::missing, 0, ""},   {program_end::cut, 0, ""},
        {program_end::exited, 1, ""},    {program_end::exited, 0, "something else\n"},
    };
    for (std::size_t act = 0; act < ACTS; ++act) {
        begin(act);
        EXPECT_EQ(pass(), events(drives, act)) << "act " << act + 1;
        // One program after the other does not answer, or not as it should.
        const auto well = programs.answers;
        for (const auto& [question, answer] : well) {
            programs.answers[question] = broken[act];
            EXPECT_EQ(pass(), Lines()) << question << ", act " << act + 1;
            programs.answers = well;
            EXPECT_EQ(pass(), Lines()) << question << " again, act " << act + 1;
        }
    }
}

} // namespace
