#include "history.h"

#include <algorithm>
#include <utility>

namespace sim {

namespace {

const char* const SAS_STATES[] = {"Optimal",     "Ready",      "Failed",  "Degraded", "Hot Spare",
                                  "Out of Sync", "Rebuilding", "Missing", "Standby",  "Optimal"};
const char* const CARD_STATES[] = {"Onln", "UGood", "UBad",    "UBUnsp", "DHS",    "GHS",
                                   "Rbld", "Offln", "HSPShld", "UGUnsp", "UGShld", "Onln"};
const char* const SAS_VOLUME_STATES[] = {"Okay",         "Degraded",      "Failed", "Missing",
                                         "Initializing", "Inactive,Okay", "Weird"};
const char* const CARD_VOLUME_STATES[] = {"Optl", "Dgrd", "Pdgd", "OfLn", "Rec"};

std::string address4(Dice& dice) {
    return format("198.%d.%d.%d", dice.between(18, 19), dice.below(250), dice.between(1, 250));
}

// ---- Network

void giveAddresses(Nic& nic, Dice& dice) {
    nic.ip4.clear();
    nic.ip6.clear();
    const int many = dice.percent(3) ? 12 : 1;
    for (int i = dice.below(3) * many; i > 0; i--)
        nic.ip4.emplace_back(address4(dice), dice.percent(50) ? 24 : dice.between(8, 32));
    for (int i = dice.below(3) * many; i > 0; i--)
        nic.ip6.push_back(dice.percent(50)
                              ? format("fe80::%x%%%s", dice.between(1, 60000), nic.name.c_str())
                              : format("2001:db8:%x::", dice.between(1, 60000)));
}

bool nameTaken(const World& world, const std::string& name) {
    return std::any_of(world.nics.begin(), world.nics.end(),
                       [&](const Nic& nic) { return nic.name == name || nic.device == name; });
}

std::string addNic(World& world, Dice& dice) {
    if (world.nics.size() > 45)
        return "";
    Nic nic;
    const char* const driver = dice.of(std::array{"em", "ix", "vlan", "tap", "xn"});
    const int unit = dice.below(60);
    nic.name = format("%s%d", driver, unit);
    nic.device = driver[0] == 'v' || driver[0] == 't' ? "" : nic.name;
    while (nameTaken(world, nic.name))
        nic.name = nic.device = format("em%zu", 60 + dice.next() % 100);
    for (bool taken = true; taken;) { // rows have gaps
        nic.row = dice.between(1, static_cast<int>(world.nics.size()) * 2 + 3);
        taken = std::any_of(world.nics.begin(), world.nics.end(),
                            [&](const Nic& other) { return other.row == nic.row; });
    }
    nic.mac = format("02:%02x:%02x:%02x:%02x:%02x", dice.below(4), dice.below(256), dice.below(2),
                     dice.below(256), dice.below(256));
    nic.up = dice.percent(85);
    nic.carrier = dice.percent(80);
    nic.medium = dice.percent(8) ? -1 : dice.below(static_cast<int>(MEDIA.size()));
    giveAddresses(nic, dice);
    world.nics.insert(world.nics.begin() + dice.below(static_cast<int>(world.nics.size()) + 1),
                      nic);
    return nic.name + " appears in row " + std::to_string(nic.row);
}

// One that is no loopback; null when there is none.
Nic* anyNic(World& world, Dice& dice) {
    Nic& nic = dice.of(world.nics);
    return nic.loopback ? nullptr : &nic;
}

std::string flapLink(World& world, Dice& dice) {
    Nic* nic = anyNic(world, dice);
    if (nic == nullptr || nic->medium < 0)
        return "";
    nic->carrier = !nic->carrier;
    return nic->name + (nic->carrier ? ": carrier" : ": no carrier");
}

std::string configureNic(World& world, Dice& dice) {
    Nic* nic = anyNic(world, dice);
    if (nic == nullptr)
        return "";
    nic->up = !nic->up;
    return nic->name + (nic->up ? " configured up" : " configured down");
}

std::string removeNic(World& world, Dice& dice) {
    Nic* nic = anyNic(world, dice);
    if (nic == nullptr)
        return "";
    const std::string name = nic->name;
    world.nics.erase(world.nics.begin() + (nic - world.nics.data()));
    return name + " goes";
}

std::string renameNic(World& world, Dice& dice) {
    Nic* nic = anyNic(world, dice);
    const std::string name = nic == nullptr     ? ""
                             : dice.percent(50) ? nic->device
                                                : "storage0uplink";
    if (name.empty() || nameTaken(world, name))
        return "";
    std::string old = std::exchange(nic->name, name);
    giveAddresses(*nic, dice);
    return old.append(" is renamed ").append(name);
}

std::string changeNic(World& world, Dice& dice) {
    Nic* nic = anyNic(world, dice);
    if (nic == nullptr)
        return "";
    if (dice.percent(30) && nic->medium >= 0)
        nic->medium = dice.below(static_cast<int>(MEDIA.size()));
    else
        giveAddresses(*nic, dice);
    return nic->name + ": addresses or medium change";
}

std::string changeRoutes(World& world, Dice& dice) {
    const Nic* nic = anyNic(world, dice);
    (dice.percent(50) ? world.gateway4_nic : world.gateway6_nic) = nic == nullptr ? "" : nic->name;
    if (dice.percent(30))
        world.name_servers.push_back(dice.percent(50) ? address4(dice) : "::1");
    if (world.name_servers.size() > 3)
        world.name_servers.clear();
    return "routes or name servers change";
}

// ---- Onboard disks

void partition(Disk& disk, Dice& dice) {
    struct Size {
        const char* text;
        std::uint64_t bytes;
    };
    const Size sizes[] = {{"512K", 512U << 10}, {"108G", 108ULL << 30},
                          {"1.5G", 3ULL << 29}, {"2.3M", (23ULL << 20) / 10},
                          {"3.0T", 3ULL << 40}, {"800B", 800}};
    for (int i = dice.below(4); i > 0; i--) {
        const Size& size = dice.of(sizes);
        Partition one{format("%sp%d", disk.name.c_str(), i), static_cast<Use>(dice.below(3))};
        one.size = size.text;
        one.bytes = size.bytes;
        one.block = dice.percent(70) ? 32768 : 0;
        one.total = dice.between(1000, 600000000);
        disk.partitions.push_back(one);
    }
}

std::string newSerial(Dice& dice) {
    return format("SN%08llX", static_cast<unsigned long long>(dice.next() >> 32));
}

std::string addDisk(World& world, Dice& dice) {
    if (world.disks.size() > 30)
        return "";
    Disk disk;
    const int unit = static_cast<int>(world.disks.size());
    disk.usb = dice.percent(8);
    const bool other = !disk.usb && dice.percent(8);
    disk.ata = !other;
    const char* const kind = other      ? dice.of(std::array{"cd", "nda", "da"})
                             : disk.usb ? "da"
                                        : "ada";
    disk.name = format("%s%d", kind, unit);
    disk.serial = newSerial(dice);
    disk.model = dice.percent(50) ? "Contoso Vault SSD 120" : "Fabrikam FX1000-AA";
    disk.firmware = format("F%d.%d", dice.below(9), dice.below(9));
    disk.bytes = static_cast<std::uint64_t>(dice.between(1, 8000)) << 30;
    disk.ssd = dice.percent(40);
    disk.rpm = dice.percent(50) ? 7200 : 5400;
    disk.bus = unit == 0 && dice.percent(20) ? -1 : unit + 100; // no place of a card's drive
    disk.temperature = dice.percent(15) ? -1 : dice.between(20, 60);
    disk.cylinders = dice.between(1, 500000);
    disk.health = dice.percent(10) ? static_cast<Health>(dice.below(5)) : Health::well;
    partition(disk, dice);
    world.disks.push_back(disk);
    return disk.name + " is new";
}

Disk* anyDisk(World& world, Dice& dice) {
    return world.disks.empty() ? nullptr : &dice.of(world.disks);
}

std::string changeHealth(World& world, Dice& dice) {
    Disk* disk = anyDisk(world, dice);
    if (disk == nullptr || disk->health == Health::silent)
        return "";
    disk->health = static_cast<Health>(dice.below(4));
    return disk->name + format(": health %d", static_cast<int>(disk->health));
}

std::string moveDisk(World& world, Dice& dice) {
    Disk* disk = anyDisk(world, dice);
    if (disk == nullptr)
        return "";
    disk->there = !disk->there;
    if (disk->there && dice.percent(30)) // another one in its place
        disk->serial = newSerial(dice);
    return disk->name + (disk->there ? " comes" : " is pulled");
}

std::string swapDisks(World& world, Dice& dice) {
    Disk *one = anyDisk(world, dice), *other = anyDisk(world, dice);
    if (one == other || !one->there || !other->there || one->usb != other->usb ||
        one->health == Health::silent || other->health == Health::silent)
        return "";
    std::swap(one->serial, other->serial);
    std::swap(one->health, other->health);
    return one->name + " and " + other->name + " change places";
}

std::string usePartition(World& world, Dice& dice) {
    Disk* disk = anyDisk(world, dice);
    if (disk == nullptr || disk->partitions.empty())
        return "";
    Partition& one = dice.of(disk->partitions);
    one.used = static_cast<std::int64_t>(dice.next() % static_cast<std::uint64_t>(one.total + 1));
    one.available = one.total * (dice.percent(20) ? 92 : 100) / 100 - one.used; // full: negative
    return one.name + " is used otherwise";
}

// ---- Drives behind controllers

std::string addDrive(Controller& controller, Dice& dice) {
    const bool sas = controller.isSas();
    Drive drive;
    drive.enclosure = controller.drives.empty()
                          ? (sas ? dice.between(1, 70)
                             : dice.percent(70) || controller.kind == Kind::card ? 252
                                                                                 : -1)
                          : controller.drives.front().enclosure;
    for (bool taken = true; taken;) {
        drive.slot = dice.below(static_cast<int>(controller.drives.size()) * 2 + 8);
        taken = std::any_of(controller.drives.begin(), controller.drives.end(),
                            [&](const Drive& other) { return other.slot == drive.slot; });
    }
    drive.state = sas ? "Ready" : "Onln";
    drive.serial = newSerial(dice);
    drive.model = dice.percent(50) || sas ? "TAILSPIN TS1200" : "Fabrikam  FX - -";
    drive.firmware = format("A%d", dice.below(100));
    drive.type = std::string(sas ? "SATA_" : "") + (dice.percent(50) ? "HDD" : "SSD");
    drive.wwn = format("50F1E2D3C4B5A%03X", dice.below(4096));
    drive.device_id = 10 + controller.number * 1000 + drive.slot;
    drive.megabytes = dice.between(100, 8000000);
    controller.drives.push_back(drive);
    return format("controller %d: new drive in slot %d", controller.number, drive.slot);
}

std::string changeDrive(World& world, Dice& dice) {
    if (world.controllers.empty())
        return "";
    Controller& controller = dice.of(world.controllers);
    if (controller.drives.size() < 2 || (controller.drives.size() < 40 && dice.percent(5)))
        return addDrive(controller, dice);
    Drive& drive = dice.of(controller.drives);
    const std::string who = format("controller %d (kind %d) slot %d: ", controller.number,
                                   static_cast<int>(controller.kind), drive.slot);
    switch (dice.below(8)) {
    case 0:
    case 1:
        drive.there = !drive.there;
        return who + (drive.there ? "comes" : "is pulled");
    case 2: { // change places
        Drive& other = dice.of(controller.drives);
        std::swap(drive.slot, other.slot);
        return who + format("changes places with slot %d", drive.slot);
    }
    default:
        drive.state = controller.isSas() ? dice.of(SAS_STATES) : dice.of(CARD_STATES);
        drive.health = static_cast<Health>(dice.below(4));
        return who + "state " + drive.state;
    }
}

std::string changeVolume(World& world, Dice& dice) {
    if (!world.volumes.empty() && dice.percent(50)) {
        Rste& volume = dice.of(world.volumes);
        volume.state = dice.of(std::array{"OPTIMAL", "DEGRADED", "SUBOPTIMAL", "BROKEN"});
        return volume.geom + " is " + volume.state;
    }
    if (world.controllers.empty())
        return "";
    Controller& controller = dice.of(world.controllers);
    if (controller.volumes.empty())
        return "";
    Volume& volume = dice.of(controller.volumes);
    volume.state = controller.isSas() ? dice.of(SAS_VOLUME_STATES) : dice.of(CARD_VOLUME_STATES);
    return format("controller %d: volume is ", controller.number) + volume.state;
}

std::string changeController(World& world, Dice& dice) {
    if (world.controllers.empty())
        return "";
    Controller& controller = dice.of(world.controllers);
    controller.there = !controller.there;
    return format("controller %d (kind %d) ", controller.number,
                  static_cast<int>(controller.kind)) +
           (controller.there ? "comes" : "goes");
}

void addController(World& world, Dice& dice, Kind kind, int number) {
    Controller controller{kind, number};
    for (int i = dice.between(0, 5); i > 0; i--)
        addDrive(controller, dice);
    const bool sas = kind == Kind::sas_ir;
    const int drives = static_cast<int>(controller.drives.size());
    for (int i = kind == Kind::sas_it || drives == 0 ? 0 : dice.below(3); i > 0; i--) {
        Volume volume{sas ? 324 - i : i, sas ? "Okay" : "Optl", sas ? "RAID1" : "RAID5",
                      format("/dev/mfid%d", i), dice.between(1, 9999999)};
        volume.level = sas && dice.percent(10) ? "Unknown" : volume.level;
        for (int member = dice.below(drives); member >= 0; member--)
            volume.members.push_back(member);
        controller.volumes.push_back(volume);
    }
    world.controllers.push_back(controller);
}

std::string changeRste(World& world, Dice& dice) {
    if (world.volumes.size() > 1) {
        world.volumes.pop_back();
        return "a software volume goes";
    }
    std::vector<std::string> members;
    for (const Disk& disk : world.disks)
        if (disk.ata && !disk.usb && disk.there)
            members.push_back(disk.name);
    if (members.size() < 2 || (world.volumes.empty() && dice.percent(90)))
        return "";
    const std::size_t number = world.volumes.size();
    world.volumes.push_back({format("Intel-08f999b%zu", number), format("raid/r%zu", number),
                             "OPTIMAL", dice.percent(50) ? 1 : 5, members});
    return "a software volume comes";
}

// ---- NVMe, programs

std::string changeNvme(World& world, Dice& dice) {
    if (world.nvmes.empty())
        return "";
    Nvme& nvme = dice.of(world.nvmes);
    if (dice.percent(30))
        nvme.there = !nvme.there;
    for (std::uint8_t& byte : nvme.health)
        byte = static_cast<std::uint8_t>(dice.percent(30) ? dice.below(256) : byte);
    nvme.health[2] &= 3; // of the temperature in kelvin
    return format("nvme%d changes", nvme.number);
}

std::string changePrograms(World& world, Dice& dice) {
    world.smartctl = dice.of(std::array{6, 7});
    world.storcli = dice.of(std::array{1, 7});
    return format("other programs: smartctl %d, storcli %d", world.smartctl, world.storcli);
}

constexpr struct {
    int weight;
    std::string (*change)(World& world, Dice& dice);
} CHANGES[] = {
    {12, flapLink},    {4, configureNic},   {2, removeNic},        {3, addNic},
    {2, renameNic},    {3, changeNic},      {2, changeRoutes},     {10, changeHealth},
    {10, moveDisk},    {1, addDisk},        {2, swapDisks},        {4, usePartition},
    {24, changeDrive}, {4, changeVolume},   {3, changeController}, {1, changeRste},
    {4, changeNvme},   {1, changePrograms},
};

} // namespace

std::string changeWorld(World& world, Dice& dice) {
    int at = dice.below(92);
    for (const auto& row : CHANGES)
        if ((at -= row.weight) < 0)
            return row.change(world, dice);
    return "";
}

void liveOn(World& world, Dice& dice) {
    for (std::int64_t& count : world.ticks)
        count += dice.below(1000);
    world.free = (dice.next() % 4096) << 20;
    world.inactive = (dice.next() % 4096) << 18;
    for (Nic& nic : world.nics)
        for (std::uint64_t& counter : nic.counters)
            counter += dice.next() % 60000000;
}

World makeWorld(std::uint64_t seed) {
    Dice dice(seed, 0, 0);
    World world;
    world.release = dice.of(std::array{10, 12, 14});
    changePrograms(world, dice);
    world.physical = static_cast<std::uint64_t>(dice.between(1, 512)) << 30;
    world.gateway4 = "192.0.2.1";
    world.gateway6 = "fe80::1%em0";
    world.link_events = !dice.percent(5);
    Nic loopback{"lo0", "", 1, "00:00:00:00:00:00"};
    loopback.loopback = true;
    loopback.medium = -1;
    loopback.ip4.emplace_back("127.0.0.1", 8);
    loopback.ip6 = {"::1", "fe80::1%lo0"};
    world.nics.push_back(loopback);
    for (int i = dice.percent(2) ? 38 : dice.below(6); i > 0; i--)
        addNic(world, dice);
    changeRoutes(world, dice);
    for (int i = dice.percent(60) ? dice.below(5) : 0; i > 0; i--)
        addDisk(world, dice);
    for (const Disk& disk : world.disks)
        if (dice.percent(50))
            world.drive_map[disk.serial] = dice.between(140, 255);
    const bool huge = dice.percent(1); // more records than fit a pass
    for (int i = dice.percent(40) ? dice.between(1, 3) : 0; i > 0; i--)
        addController(world, dice, dice.percent(50) ? Kind::sas_it : Kind::sas_ir, 3 - i);
    for (int i = dice.percent(30) ? dice.between(1, 3) : 0; i > 0; i--)
        addController(world, dice, dice.percent(40) ? Kind::megaraid : Kind::card, 3 - i);
    for (int i = 0; huge && !world.controllers.empty() && i < 280; i++)
        addDrive(world.controllers.front(), dice);
    world.cards_enabled = dice.percent(80);
    world.has_sas3ircu = !world.controllers.empty() || dice.percent(50);
    world.has_storcli = !world.controllers.empty() || dice.percent(50);
    world.rste_enabled = !dice.percent(5);
    for (int i = dice.percent(12) ? 30 : 0; i > 0 && world.volumes.empty(); i--)
        changeRste(world, dice);
    world.nvme_enabled = dice.percent(50);
    for (int i = dice.percent(50) ? dice.below(4) : 0; i > 0; i--) {
        Nvme nvme{i * 7 % 12};
        nvme.serial = newSerial(dice);
        nvme.model = "Larch DC-960 read-intensive SSD  ";
        nvme.blocks = dice.next() >> dice.between(20, 40);
        nvme.block_bits = dice.percent(50) ? 9 : 12;
        world.nvmes.push_back(nvme);
        changeNvme(world, dice);
    }
    return world;
}

} // namespace sim
