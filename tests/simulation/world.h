// The truth of a simulated server. history.cpp makes and changes it, answers*.cpp let it speak in
// the words of programs, platform.cpp in those of a kernel, and the oracle knows it.
#pragma once

#include "simulator/core.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace sim {

using bmcsim::format;

// The pattern with each {} replaced by the next value.
template <class... Values>
std::string say(std::string_view pattern, const Values&... values) {
    std::string text;
    const auto put = [&](const auto& value) {
        const std::size_t at = pattern.find("{}");
        text += pattern.substr(0, at);
        if constexpr (std::is_arithmetic_v<std::decay_t<decltype(value)>>)
            text += std::to_string(value);
        else
            text += value;
        pattern.remove_prefix(at + 2);
    };
    (put(values), ...);
    return text.append(pattern);
}

// Random numbers that depend on the seed, the pass and the step only: a history from which steps
// are left out stays the same otherwise.
class Dice {
  public:
    Dice(std::uint64_t seed, int pass, int step) : m_state(seed) {
        m_state = next() ^ static_cast<std::uint64_t>(pass);
        m_state = next() ^ static_cast<std::uint64_t>(step);
    }
    std::uint64_t next() { // SplitMix64
        std::uint64_t z = m_state += 0x9E3779B97F4A7C15U;
        z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9U;
        z = (z ^ z >> 27) * 0x94D049BB133111EBU;
        return z ^ z >> 31;
    }
    int below(std::size_t bound) {
        return static_cast<int>(next() % bound);
    }
    int between(int low, int high) {
        return low + below(static_cast<std::size_t>(high - low + 1));
    }
    bool percent(int chance) {
        return below(100) < chance;
    }
    template <class One>
    One of(std::initializer_list<One> list) {
        return list.begin()[below(list.size())];
    }
    template <class List>
    auto& of(List& list) {
        return list[static_cast<std::size_t>(below(std::size(list)))];
    }

  private:
    std::uint64_t m_state;
};

struct Medium {
    const char *linked, *unlinked; // as ifconfig tells them
    int speed, unlinked_speed;     // Mbit/s as they are reported
};
extern const std::vector<Medium> MEDIA;

struct Nic {
    std::string name, device; // device: as the PCI bus knows it, empty for a virtual one
    int row = 0;              // of the kernel's table
    std::string mac;
    bool loopback = false, up = true, carrier = true;
    const Medium* medium = nullptr;                    // null: neither medium nor status
    std::vector<std::pair<std::string, int>> ip4 = {}; // address and prefix length
    std::vector<std::string> ip6 = {};                 // with their zone
    std::array<std::uint64_t, 4> counters = {};        // in, errors in, out, errors out

    bool linked() const {
        return up && carrier && medium != nullptr;
    }
};

constexpr const char* NVME_MODEL = "Larch DC-960 read-intensive SSD  ";
constexpr const char *GATEWAY4 = "192.0.2.1", *GATEWAY6 = "fe80::1%em0";

enum class Use { mounted, swap, unmounted };
struct Partition {
    std::string name; // in /dev
    Use use = Use::mounted;
    std::string size = {};                           // as gpart shows it
    std::uint64_t bytes = 0;                         // what that is
    std::int64_t total = 0, used = 0, available = 0; // kilobytes
    int block = 0;                                   // of its file system, 0: newfs refuses
};

enum class Health { well, predicted, warned, failed, silent };
struct Disk {
    std::string name, serial, model, firmware;
    bool there = true, ssd = false, usb = false;
    bool ata = true; // answers as an ATA disk does
    std::uint64_t gigabytes = 0;
    int rpm = 7200, bus = 0, temperature = 30, cylinders = 1000;
    Health health = Health::well;
    std::vector<Partition> partitions = {};
};

struct Drive {
    int enclosure = 0, slot = 0;
    bool there = true;
    std::string state, serial, model, firmware, type, wwn = {};
    int device_id = 0, megabytes = 0;
    Health health = Health::well; // MegaRAID, as smartctl tells it
};

struct Volume {
    int id = 0;
    std::string state, level;
    int megabytes = 0;
    std::vector<std::size_t> members = {}; // places of drives
};

enum class Kind { sas_it, sas_ir, megaraid, card };
struct Controller {
    Kind kind = Kind::sas_it;
    int number = 0;
    bool there = true;
    std::vector<Drive> drives = {};
    std::vector<Volume> volumes = {};

    bool isSas() const {
        return kind <= Kind::sas_ir;
    }
};

struct Rste {
    std::string provider, state;
    int level = 1;
    std::vector<std::string> members; // disk names
};

struct Nvme {
    int number = 0;
    bool there = true;
    std::string serial = {};
    std::array<std::uint8_t, 512> health = {};
    std::uint64_t blocks = 0;
    std::uint8_t block_bits = 9;
};

struct World {
    int release = 14;                             // of FreeBSD: 10, 12 or 14
    int smartctl = 7;                             // 6 or 7
    int storcli = 7;                              // 1 or 7
    bool has_sas3ircu = true, has_storcli = true; // installed
    bool rste_enabled = true, cards_enabled = false, link_events = true, nvme_enabled = true;
    std::string host = "server";
    std::vector<std::string> name_servers;
    std::vector<Nic> nics;
    std::string gateway4_nic, gateway6_nic;
    std::vector<Disk> disks;
    std::vector<Controller> controllers;
    std::vector<Rste> volumes;
    std::vector<Nvme> nvmes;
    std::map<std::string, int> drive_map; // serial to slot
    std::array<std::int64_t, 5> ticks = {1000, 0, 500, 100, 90000};
    std::uint64_t physical = 8ULL << 30, inactive = 1ULL << 30, free = 2ULL << 30;
};

World makeWorld(std::uint64_t seed);
void liveOn(World& world, Dice& dice);
// One of the things that happen to a server. Tells it, or nothing when it doesn't apply.
std::string changeWorld(World& world, Dice& dice);

std::string osVersion(const World& world);
std::pair<std::string, std::string> adapterOf(const std::string& device);
std::string storcliModel(const Controller& controller);
const Disk* diskNamed(const World& world, const std::string& name);

// What a program prints for a command line, and its exit status; nothing when it isn't installed.
// `command` is the words joined by blanks.
struct Printed {
    int status = 0;
    std::string text;
};
std::optional<Printed> answer(const World& world, const std::string& command);
Printed systemAnswer(const World& world, const std::string& program, const std::string& command);

std::vector<std::string> devNames(const World& world);

} // namespace sim
