// The making of a server, and what happens to it.
#include "world.h"

#include <algorithm>
#include <utility>

namespace sim {

namespace {

template <class List, class Number>
int freeNumber(const List& list, Number number, int low, int high, Dice& dice) {
    for (;;) {
        const int chosen = dice.between(low, high);
        if (std::none_of(list.begin(), list.end(),
                         [&](auto& other) { return other.*number == chosen; }))
            return chosen;
    }
}

std::string address4(Dice& dice) {
    return format("198.%d.%d.%d", dice.between(18, 19), dice.below(250), dice.between(1, 250));
}

void giveAddresses(Nic& nic, Dice& dice) {
    nic.ip4.clear();
    nic.ip6.clear();
    const int many = dice.percent(3) ? 12 : 1;
    for (int i = dice.below(3) * many; i > 0; i--)
        nic.ip4.emplace_back(address4(dice), dice.percent(50) ? 24 : dice.between(8, 32));
    for (int i = dice.below(3) * many; i > 0; i--)
        nic.ip6.push_back(dice.percent(50)
                              ? format("fe80::%x%%%s", dice.between(1, 60000), nic.name.c_str())
                              : format("2001:db8:%x:%x::", nic.row, dice.between(1, 60000)));
}

bool nameTaken(const World& world, const std::string& name) {
    return std::any_of(world.nics.begin(), world.nics.end(),
                       [&](const Nic& nic) { return nic.name == name || nic.device == name; });
}

std::string addNic(World& world, Dice& dice) {
    if (world.nics.size() > 45)
        return "";
    Nic nic;
    const char* const driver = dice.of({"em", "ix", "vlan", "tap", "xn"});
    nic.name = say("{}{}", driver, dice.below(60));
    nic.device = driver[0] == 'v' || driver[0] == 't' ? "" : nic.name;
    while (nameTaken(world, nic.name))
        nic.name = nic.device = say("em{}", dice.between(60, 160));
    const int count = static_cast<int>(world.nics.size());
    nic.row = freeNumber(world.nics, &Nic::row, 1, count * 2 + 3, dice); // rows have gaps
    nic.mac = format("02:%02x:%02x:%02x:%02x:%02x", dice.below(4), dice.below(256), dice.below(2),
                     dice.below(256), dice.below(256));
    nic.up = dice.percent(85);
    nic.carrier = dice.percent(80);
    nic.medium = dice.percent(8) ? nullptr : &dice.of(MEDIA);
    giveAddresses(nic, dice);
    world.nics.insert(world.nics.begin() + dice.between(0, count), nic);
    return say("{} appears in row {}", nic.name, nic.row);
}

std::string changeNic(World& world, Dice& dice) {
    Nic& nic = dice.of(world.nics);
    const std::string name = nic.name, other = "storage0uplink";
    const int what = dice.below(23);
    if (nic.loopback || (what < 3 && nameTaken(world, other)))
        return "";
    if (what < 3) {
        nic.name = other;
        giveAddresses(nic, dice);
        return name + " is renamed " + other;
    }
    if (what < 5) {
        world.nics.erase(world.nics.begin() + (&nic - world.nics.data()));
        return name + " goes";
    }
    if (what < 7)
        giveAddresses(nic, dice);
    else if (what < 8)
        nic.medium = nic.medium == nullptr ? nullptr : &dice.of(MEDIA);
    else if (what < 12)
        nic.up = !nic.up;
    else
        nic.carrier = !nic.carrier;
    return say("{}: addresses, medium, up {} or carrier {}", name, nic.up, nic.carrier);
}

std::string changeRoutes(World& world, Dice& dice) {
    const Nic& nic = dice.of(world.nics);
    (dice.percent(50) ? world.gateway4_nic : world.gateway6_nic) = nic.loopback ? "" : nic.name;
    if (dice.percent(30))
        world.name_servers.push_back(dice.percent(50) ? address4(dice) : "::1");
    if (world.name_servers.size() > 3)
        world.name_servers.clear();
    return "routes or name servers change";
}

std::string newSerial(Dice& dice) {
    return format("SN%08X", static_cast<unsigned>(dice.next()));
}

std::string addDisk(World& world, Dice& dice) {
    if (world.disks.size() > 30)
        return "";
    Disk disk;
    const int unit = static_cast<int>(world.disks.size());
    disk.usb = dice.percent(8);
    disk.ata = disk.usb || !dice.percent(8);
    const char* const other = dice.of({"cd", "nda", "da"});
    disk.name = say("{}{}", disk.usb ? "da" : disk.ata ? "ada" : other, unit);
    disk.serial = newSerial(dice);
    disk.model = dice.of({"Contoso Vault SSD 120", "Fabrikam FX1000-AA"});
    disk.firmware = say("F{}.{}", dice.below(9), dice.below(9));
    disk.gigabytes = static_cast<std::uint64_t>(dice.between(1, 8000));
    disk.ssd = dice.percent(40);
    disk.rpm = dice.of({7200, 5400});
    disk.bus = unit == 0 && dice.percent(20) ? -1 : unit + 100; // no place of a card's drive
    disk.temperature = dice.percent(15) ? -1 : dice.between(20, 60);
    disk.cylinders = dice.between(1, 500000);
    disk.health = dice.percent(10) ? static_cast<Health>(dice.below(5)) : Health::well;
    const std::vector<std::pair<const char*, std::uint64_t>> sizes = {
        {"512K", 512U << 10},         {"108G", 108ULL << 30}, {"1.5G", 3ULL << 29},
        {"2.3M", (23ULL << 20) / 10}, {"3.0T", 3ULL << 40},   {"800B", 800}};
    for (int i = 1, last = dice.below(4); i <= last; i++) {
        const auto& [size, bytes] = dice.of(sizes);
        disk.partitions.push_back({say("{}p{}", disk.name, i), static_cast<Use>(dice.below(3)),
                                   size, bytes, dice.between(1000, 600000000)});
        disk.partitions.back().block = dice.percent(70) ? 32768 : 0;
    }
    world.disks.push_back(disk);
    return disk.name + " is new";
}

std::string changeDisk(World& world, Dice& dice) {
    if (world.disks.empty())
        return "";
    Disk& disk = dice.of(world.disks);
    const int what = dice.below(26);
    if (Disk& other = dice.of(world.disks); what < 2) {
        if (!disk.there || !other.there || disk.usb != other.usb || disk.health == Health::silent ||
            other.health == Health::silent)
            return "";
        std::swap(disk.serial, other.serial);
        std::swap(disk.health, other.health);
        return disk.name + " and " + other.name + " change places";
    }
    if (what < 6 && !disk.partitions.empty()) {
        Partition& one = dice.of(disk.partitions);
        one.used = dice.between(0, static_cast<int>(one.total));
        one.available = one.total * dice.of({92, 100}) / 100 - one.used; // full: negative
    } else if (what < 16 && disk.health != Health::silent) {
        disk.health = static_cast<Health>(dice.below(4));
    } else {
        disk.there = !disk.there;
        if (disk.there && dice.percent(30)) // another one in its place
            disk.serial = newSerial(dice);
    }
    return say("{}: there {}, health {}", disk.name, disk.there, static_cast<int>(disk.health));
}

std::string addDrive(Controller& controller, Dice& dice) {
    const bool sas = controller.isSas();
    const bool bare = controller.kind == Kind::megaraid && dice.percent(30); // without enclosures
    auto& drives = controller.drives;
    Drive drive;
    drive.enclosure = bare ? -1 : sas ? dice.between(1, 70) : 252;
    if (!drives.empty())
        drive.enclosure = drives.front().enclosure;
    drive.slot = freeNumber(drives, &Drive::slot, 0, static_cast<int>(drives.size()) * 2 + 7, dice);
    drive.state = sas ? "Ready" : "Onln";
    drive.serial = newSerial(dice);
    drive.model = dice.percent(50) || sas ? "TAILSPIN TS1200" : "Fabrikam  FX - -";
    drive.firmware = say("A{}", dice.below(100));
    drive.type = say("{}{}", sas ? "SATA_" : "", dice.of({"HDD", "SSD"}));
    drive.wwn = format("50F1E2D3C4B5A%03X", dice.below(4096));
    drive.device_id = 10 + controller.number * 1000 + static_cast<int>(drives.size());
    drive.megabytes = dice.between(100, 8000000);
    drives.push_back(drive);
    return say("controller {}: new drive in slot {}", controller.number, drive.slot);
}

std::string changeDrive(Controller& controller, Dice& dice) {
    if (controller.drives.size() < 2 || (controller.drives.size() < 40 && dice.percent(5)))
        return addDrive(controller, dice);
    Drive &drive = dice.of(controller.drives), &other = dice.of(controller.drives);
    const int what = dice.below(8);
    if (what < 2)
        drive.there = !drive.there;
    else if (what < 3) // change places
        std::swap(drive.slot, other.slot);
    else {
        drive.state = controller.isSas()
                          ? dice.of({"Optimal", "Ready", "Failed", "Degraded", "Hot Spare",
                                     "Out of Sync", "Rebuilding", "Missing", "Standby"})
                          : dice.of({"Onln", "UGood", "UBad", "UBUnsp", "DHS", "GHS", "Rbld",
                                     "Offln", "HSPShld", "UGUnsp", "UGShld"});
        drive.health = static_cast<Health>(dice.below(4));
    }
    return say("controller {} (kind {}) slot {}: there {}, {}", controller.number,
               static_cast<int>(controller.kind), drive.slot, drive.there, drive.state);
}

std::string changeController(World& world, Dice& dice) {
    if (world.controllers.empty())
        return "";
    Controller& controller = dice.of(world.controllers);
    const int what = dice.below(29);
    if (what < 24)
        return changeDrive(controller, dice);
    if (what < 27)
        controller.there = !controller.there;
    else if (!controller.volumes.empty())
        dice.of(controller.volumes).state =
            controller.isSas() ? dice.of({"Okay", "Degraded", "Failed", "Missing", "Initializing",
                                          "Inactive,Okay", "Weird"})
                               : dice.of({"Optl", "Dgrd", "Pdgd", "OfLn", "Rec"});
    return say("controller {} (kind {}): there {}, or a volume", controller.number,
               static_cast<int>(controller.kind), controller.there);
}

void addController(World& world, Dice& dice, Kind kind, int number) {
    Controller controller{kind, number};
    for (int i = dice.below(6); i > 0; i--)
        addDrive(controller, dice);
    const bool sas = kind == Kind::sas_ir;
    const std::size_t drives = controller.drives.size();
    for (int i = kind == Kind::sas_it || drives == 0 ? 0 : dice.below(3); i > 0; i--) {
        Volume volume{sas ? 324 - i : i, sas ? "Okay" : "Optl", sas ? "RAID1" : "RAID5",
                      dice.between(1, 9999999)};
        volume.level = sas && dice.percent(10) ? "Unknown" : volume.level;
        for (int member = dice.below(drives); member >= 0; member--)
            volume.members.push_back(static_cast<std::size_t>(member));
        controller.volumes.push_back(volume);
    }
    world.controllers.push_back(controller);
}

std::string changeRste(World& world, Dice& dice) {
    if (!world.volumes.empty() && dice.percent(70)) {
        Rste& volume = dice.of(world.volumes);
        volume.state = dice.of({"OPTIMAL", "DEGRADED", "SUBOPTIMAL", "BROKEN"});
        return volume.provider + " is " + volume.state;
    }
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
    const std::string provider = say("raid/r{}", world.volumes.size());
    world.volumes.push_back({provider, "OPTIMAL", dice.of({1, 5}), members});
    return "a software volume comes";
}

std::string changeNvme(World& world, Dice& dice) {
    if (world.nvmes.empty())
        return "";
    Nvme& nvme = dice.of(world.nvmes);
    if (dice.percent(30))
        nvme.there = !nvme.there;
    for (std::uint8_t& byte : nvme.health)
        byte = static_cast<std::uint8_t>(dice.percent(30) ? dice.below(256) : byte);
    nvme.health[2] &= 3; // of the temperature in kelvin
    return say("nvme{} changes", nvme.number);
}

void addNvme(World& world, Dice& dice, int number) {
    Nvme nvme{number, true, newSerial(dice)};
    nvme.blocks = dice.next() >> dice.between(20, 40);
    nvme.block_bits = dice.of<std::uint8_t>({9, 12});
    world.nvmes.push_back(nvme);
    changeNvme(world, dice);
}

std::string changePrograms(World& world, Dice& dice) {
    world.smartctl = dice.of({6, 7});
    world.storcli = dice.of({1, 7});
    return say("other programs: smartctl {}, storcli {}", world.smartctl, world.storcli);
}

const std::vector<std::pair<int, std::string (*)(World& world, Dice& dice)>> CHANGES = {
    {23, changeNic}, {3, addNic},     {2, changeRoutes},   {26, changeDisk},      {1, addDisk},
    {3, changeRste}, {4, changeNvme}, {1, changePrograms}, {29, changeController}};

} // namespace

std::string changeWorld(World& world, Dice& dice) {
    int at = dice.below(92);
    for (const auto& [weight, change] : CHANGES)
        if ((at -= weight) < 0)
            return change(world, dice);
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
    world.release = dice.of({10, 12, 14});
    changePrograms(world, dice);
    world.physical = static_cast<std::uint64_t>(dice.between(1, 512)) << 30;
    world.link_events = !dice.percent(5);
    Nic loopback{"lo0", "", 1, "00:00:00:00:00:00", true};
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
    for (int i = dice.percent(40) ? dice.between(1, 3) : 0; i > 0; i--)
        addController(world, dice, dice.of({Kind::sas_it, Kind::sas_ir}), 3 - i);
    for (int i = dice.percent(30) ? dice.between(1, 3) : 0; i > 0; i--)
        addController(world, dice, dice.percent(40) ? Kind::megaraid : Kind::card, 3 - i);
    const bool huge = !world.controllers.empty() && dice.percent(1);
    for (int i = huge ? 280 : 0; i > 0; i--) // more records than fit a pass
        addDrive(world.controllers.front(), dice);
    world.cards_enabled = dice.percent(80);
    world.has_sas3ircu = !world.controllers.empty() || dice.percent(50);
    world.has_storcli = !world.controllers.empty() || dice.percent(50);
    world.rste_enabled = !dice.percent(5);
    for (int i = dice.percent(12) ? 30 : 0; i > 0 && world.volumes.empty(); i--)
        changeRste(world, dice);
    world.nvme_enabled = dice.percent(50);
    for (int i = dice.percent(50) ? dice.below(4) : 0; i > 0; i--)
        addNvme(world, dice, i * 7 % 12);
    return world;
}

} // namespace sim
