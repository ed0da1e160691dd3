#include "nvme/locate.h"

#include "bmc/request.h"
#include "nvme/device.h"
#include "state/flags.h"
#include "text.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace {

using std::chrono::steady_clock;

constexpr const char* LABEL = "NVME locate ->";

// Requests of the backplane: OEM_NVME_POSITION, then the operation.
constexpr BYTE POSITION_READ = 0x00;
constexpr BYTE POSITION_LOCATE = 0x01;

constexpr int AOCS = 2;
constexpr int GROUPS = 8;
constexpr int SLOTS = 24;
// What the time-outs of a search may cost. A backplane may answer so, at once, for a slot that it
// can't read.
constexpr std::chrono::seconds TIMEOUTS_MOST{15};

constexpr std::size_t SERIAL_OFFSET = 6; // in the answer to POSITION_READ
constexpr std::size_t SERIAL_SIZE = 20;

// The device's serial number; false when the device fails.
bool deviceSerial(const char* deviceName, std::string& serial) {
    const nvme_controller device(deviceName);
    nvme_controller_data cdata;
    if (!device.isOpen() || !read_controller_data(device.fd(), cdata))
        return false;
    char text[30];
    nvme_strvis(text, &cdata[CTRL_SN], sizeof text, CTRL_SN_SIZE);
    serial = text;
    serial.resize(std::min(serial.size(), SERIAL_SIZE));
    return true;
}

// False when the BMC refuses or no drive is there. An answer that ends inside the serial number
// gives the part of it that came.
bool positionSerial(int aoc, int group, int slot, std::string& serial) {
    const bmc_response answer =
        askBmc(NETFN_OEM, CMD_OEM_GENERAL,
               {OEM_NVME_POSITION, POSITION_READ, static_cast<BYTE>(aoc), static_cast<BYTE>(slot),
                0x01, static_cast<BYTE>(group), 0x00, 0x19});
    if (!answer.ok() || answer.length <= SERIAL_OFFSET || answer.data[SERIAL_OFFSET] == 0)
        return false;
    serial = answer.text().substr(SERIAL_OFFSET, SERIAL_SIZE);
    serial.resize(std::min(serial.find('\0'), serial.size()));
    return true;
}

void replaceFourthO(std::string& serial) {
    if (serial.size() > 3 && (serial[3] == 'O' || serial[3] == 'o'))
        serial[3] = '0';
}

// Whether the drive at a position is the device. Serial numbers of the form S???N are written with
// the letter O or with the digit 0 in the fourth place; once such a position has been seen, the
// device's keeps the digit.
bool sameDrive(std::string& device, std::string& position) {
    trim(position);
    trim(device);
    if (device == position)
        return true;
    if (position.size() < 5 || position[0] != 'S' || position[4] != 'N')
        return false;
    replaceFourthO(device);
    replaceFourthO(position);
    return device == position;
}

} // namespace

int locateManage(int index, const char* deviceName) {
    std::string device;
    if (!deviceSerial(deviceName, device)) {
        deviceFailed(LABEL, deviceName);
        return 1;
    }
    steady_clock::duration lost{};
    for (int position = 0; position < AOCS * GROUPS * SLOTS && !stopRequested(); position++) {
        const int aoc = position / (GROUPS * SLOTS), group = position / SLOTS % GROUPS,
                  slot = position % SLOTS;
        std::string serial;
        const auto began = steady_clock::now();
        if (positionSerial(aoc, group, slot, serial) && sameDrive(device, serial)) {
            locateLed(index, aoc, slot, group);
            return 0;
        }
        if (bmcAway())
            lost += steady_clock::now() - began;
        if (transportFailed() || lost > TIMEOUTS_MOST)
            return 0;
        tryBmcAgain();
    }
    return 0;
}

BYTE locateLed(int index, int aoc, int slot, int group) {
    const BYTE code =
        askBmc(NETFN_OEM, CMD_OEM_GENERAL,
               {OEM_NVME_POSITION, POSITION_LOCATE, static_cast<BYTE>(aoc), static_cast<BYTE>(slot),
                static_cast<BYTE>(index), static_cast<BYTE>(group)})
            .code;
    if (code != 0)
        std::printf("failed execute locate :");
    return code;
}
