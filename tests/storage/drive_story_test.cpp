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
    std::string kind, slot, states[ACTS], events[ACTS];
};

std::vector<life> lives() {
    std::vector<life> all;
    std::istringstream story(STORY);
    for (life one; story >> one.kind >> one.slot; all.push_back(one))
        for (std::size_t act = 0; act < ACTS; ++act) {
            std::string told;
            story >> told;
            one.states[act] = told.substr(0, told.find(':'));
            one.events[act] = told.substr(std::min(one.states[act].size() + 1, told.size()));
            std::replace(one.states[act].begin(), one.states[act].end(), '_', ' ');
        }
    return all;
}

std::string hex(int byte) {
    char text[8];
    std::snprintf(text, sizeof text, "%02X ", static_cast<unsigned>(byte));
    return text;
}

// The events of an act: sensor, alert, type and drive bytes, sorted. A missing IR or RAID drive has
// the sensor and the drive bytes of an IT drive.
Lines events(const std::vector<life>& drives, std::size_t act) {
    const std::map<std::string, const char*> places = {
        {"hd", "FF "}, {"it", "02 "}, {"ir", "42 "}, {"raid", "3C "}};
    Lines all;
    for (const life& drive : drives)
        for (std::string rest = drive.events[act]; !rest.empty(); rest.erase(0, 3)) {
            const std::string type = (rest[0] == '+' ? "70 " : "F0 ") + rest.substr(1, 2) + " ";
            const bool missing = type == "70 A0 " && drive.kind != "hd";
            const int slot = std::stoi(drive.slot) + (drive.kind == "ir" && !missing ? 16 : 0);
            all.push_back((missing || drive.kind == "it" ? "5F " : "FF ") + type + hex(slot) +
                          (missing || drive.kind == "it" ? places.at(drive.kind) : "FF "));
        }
    std::sort(all.begin(), all.end());
    return all;
}

// The health in the words of smartctl.
std::string health(const std::string& state) {
    if (state == "silent")
        return "";
    return "SMART overall-health self-assessment test result: " +
           std::string(state == "failed" ? "FAILED!\n" : "PASSED\n") +
           (state == "passed but" ? "Please note the following marginal Attributes:\nID#\n" : "");
}

class DriveStory : public BmcTest {
  protected:
    // The programs tell of the drives that are there in an act.
    void begin(std::size_t act) {
        std::map<std::string, std::string> rows; // by kind
        for (const life& drive : drives) {
            const std::string &state = drive.states[act], &slot = drive.slot, disk = "ada" + slot;
            if (state == "gone")
                continue;
            if (drive.kind == "raid") {
                rows["raid"] += "252:" + slot + "   " + state + "\n";
            } else if (drive.kind == "hd") {
                rows["hd"] += "Geom name: " + disk + "\n";
                programs.print("camcontrol identify " + disk, "device model  M\n");
                programs.print("smartctl -i -H -A /dev/" + disk,
                               "smartctl 7.4\nSerial Number: HD" + slot + "\n" + health(state));
                programs.files[hdd_file] += "HD" + slot + "," + slot + "\n";
            } else {
                rows[drive.kind] += "Device is a Hard disk\n  Enclosure # : 2\n  Slot # : " + slot +
                                    "\n  State : " + state + " (XYZ)\n";
            }
        }
        const auto display = [](const char* raid_support, const std::string& devices) {
            return "Controller information\n  RAID Support : " + std::string(raid_support) +
                   "\nPhysical device information\n" + devices + "Enclosure information\n";
        };
        programs.print("sas3ircu list", "   0  SAS3008 1 2\n   1  SAS3008 1 2\n");
        programs.print("sas3ircu 0 display", display("No", rows["it"]));
        programs.print("sas3ircu 1 display", display("Yes", rows["ir"]));
        programs.print("storcli show", "Number of Controllers = 1\n  0 RAIDX9  8 28\n");
        programs.print("storcli /c0 show",
                       "Controller = 0\nPD LIST :\n-----\nEID:Slt State\n-----\n" + rows["raid"] +
                           "-----\nUBad-Unconfigured Bad\n");
        programs.print("geom disk list", rows["hd"]);
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
            told.emplace_back();
            for (std::size_t at = 3; at < record.size(); ++at)
                told.back() += hex(record[at]);
        }
        std::sort(told.begin(), told.end());
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
